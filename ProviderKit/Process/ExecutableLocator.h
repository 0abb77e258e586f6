#pragma once

#include "ProviderKit/Process/Environment.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace gaugewell {

// Finds a command-line tool: a configured location first, then well-known candidates, then
// the entries of a PATH. A candidate counts when it is a regular file (symlinks followed) that
// we may execute. Paths come back with "." and ".." resolved but symlinks kept as they are, so
// that a node-version-manager shim is run through its own path. File-system errors only ever
// mean fewer results.
class ExecutableLocator {
public:
    // `executableName` inside every Node.js version that nvm installed under the home directory,
    // newest version first; only the usable ones.
    std::vector<std::filesystem::path>
    nodeVersionManagerCandidates(const std::filesystem::path& homeDirectory,
                                 const std::string& executableName) const;

    // The first usable of: `configured`, each of `commonCandidates`, `executableName` in each
    // entry of environment["PATH"] (empty entries and "." skipped).
    std::optional<std::filesystem::path> locate(const std::optional<std::filesystem::path>& configured,
                                                const std::string& executableName,
                                                const std::vector<std::filesystem::path>& commonCandidates,
                                                const Environment& environment) const;

    static bool isUsable(const std::filesystem::path& path);
};

} // namespace gaugewell
