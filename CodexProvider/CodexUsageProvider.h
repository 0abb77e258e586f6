#pragma once

#include "ProviderKit/GaugewellProvider.h"
#include "ProviderKit/Process/CommandRunning.h"
#include "ProviderKit/Process/Environment.h"
#include "ProviderKit/Process/ExecutableLocator.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>

namespace gaugewell {

// Codex usage read from the locally installed `codex` tool through its app-server protocol.
// Immutable and stateless between calls: every probe and collection finds the tool afresh, so
// installing or moving it takes effect at the next call. Nothing the tool prints ever reaches
// a diagnostic.
class CodexUsageProvider final : public GaugewellProvider {
public:
    struct Limits {
        std::chrono::milliseconds timeout;
        std::int64_t outputLimit;
    };
    static constexpr Limits probeVersionLimits{std::chrono::seconds(3), 16'384};
    static constexpr Limits probeHelpLimits{std::chrono::seconds(3), 65'536};
    static constexpr Limits exchangeLimits{std::chrono::seconds(10), 1'048'576};
    static constexpr Limits collectionVersionLimits{std::chrono::seconds(5), 16'384};

    // `homeDirectory` and `processEnvironment` stand in for ours; when absent they are read at
    // each call (HOME, or the user database; `environ`).
    CodexUsageProvider(std::optional<std::filesystem::path> configuredExecutable, ExecutableLocator locator,
                       std::shared_ptr<const CommandRunning> commandRunner,
                       std::optional<std::filesystem::path> homeDirectory = std::nullopt,
                       std::optional<Environment> processEnvironment = std::nullopt);

    // The real runner and locator, our own home and environment.
    static std::shared_ptr<const CodexUsageProvider>
    makeSystemProvider(std::optional<std::filesystem::path> configuredExecutable = std::nullopt);

    const ProviderDescriptor& descriptor() const override;
    ProviderProbeResult probe() const noexcept override;
    ProviderCollectionResult collect(const UsageCollectionRequest& request) const noexcept override;

    // The executable that a probe or collection would use now.
    std::optional<std::filesystem::path> resolveExecutable() const;
    // The child's environment: the allow-listed variables, with the executable's own folder put
    // first on PATH when it is not there already (an npm shim needs its `node` beside it).
    Environment childEnvironment(const std::filesystem::path& executable) const;

private:
    std::filesystem::path currentHomeDirectory() const;
    Environment currentEnvironment() const;
    Expected<CommandOutput, ProcessSupportError> runTool(const std::filesystem::path& executable,
                                                         const std::vector<std::string>& arguments,
                                                         const Environment& environment, Limits limits) const;
    ProviderProbeResult probeExecutable(const std::filesystem::path& executable) const;
    ProviderCollectionResult collectWith(const std::filesystem::path& executable,
                                         const UsageCollectionRequest& request) const;

    std::optional<std::filesystem::path> configuredExecutable;
    ExecutableLocator locator;
    std::shared_ptr<const CommandRunning> commandRunner;
    std::optional<std::filesystem::path> homeDirectory;
    std::optional<Environment> processEnvironment;
};

} // namespace gaugewell
