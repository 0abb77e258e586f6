#include "ProviderKit/CodexSignIn/CodexExecutable.h"

#include "ProviderKit/Process/ProcessEnvironment.h"

namespace gaugewell {

std::optional<std::filesystem::path>
CodexExecutable::locate(const ExecutableLocator& locator,
                        const std::optional<std::filesystem::path>& configured,
                        const std::filesystem::path& homeDirectory, const Environment& processEnvironment) {
    std::vector<std::filesystem::path> candidates{"/opt/homebrew/bin/codex", "/usr/local/bin/codex"};
    if (!homeDirectory.empty()) {
        for (auto& candidate : locator.nodeVersionManagerCandidates(homeDirectory, "codex")) {
            candidates.push_back(std::move(candidate));
        }
    }
    return locator.locate(configured, "codex", candidates, processEnvironment);
}

Environment CodexExecutable::childEnvironment(const std::filesystem::path& executable,
                                              const Environment& processEnvironment) {
    Environment environment = ProcessEnvironment::providerEnvironment(processEnvironment);
    const auto existing = environment.find("PATH");
    const std::string searchPath =
        existing != environment.end() ? existing->second : std::string(ProcessEnvironment::defaultSearchPath);
    const std::string directory = executable.parent_path().string();
    std::size_t start = 0;
    while (start <= searchPath.size()) {
        const auto end = std::min(searchPath.find(':', start), searchPath.size());
        if (end > start && searchPath.compare(start, end - start, directory) == 0 &&
            end - start == directory.size()) {
            return environment;
        }
        start = end + 1;
    }
    environment["PATH"] = directory + ":" + searchPath;
    return environment;
}

} // namespace gaugewell
