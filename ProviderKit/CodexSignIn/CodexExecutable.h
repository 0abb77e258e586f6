#pragma once

#include "ProviderKit/Process/Environment.h"
#include "ProviderKit/Process/ExecutableLocator.h"

#include <filesystem>
#include <optional>

namespace gaugewell {

// Finding the `codex` tool and the environment it runs in: shared by the usage provider and
// the authentication manager, which must agree on which tool they talk to.
class CodexExecutable {
public:
    // A configured path first, then the package-manager locations, the node version manager's
    // installs (newest first) and finally our PATH.
    static std::optional<std::filesystem::path> locate(const ExecutableLocator& locator,
                                                       const std::optional<std::filesystem::path>& configured,
                                                       const std::filesystem::path& homeDirectory,
                                                       const Environment& processEnvironment);

    // The reduced environment, with the tool's own folder put first on PATH so that what is
    // installed beside it (a node-version-manager Node.js) is found by the child.
    static Environment childEnvironment(const std::filesystem::path& executable,
                                        const Environment& processEnvironment);
};

} // namespace gaugewell
