#include "CodexUsageProvider.h"

#include "CodexAppServerTransport.h"
#include "CodexDiagnostics.h"
#include "CodexPayloadNormalizer.h"
#include "CodexText.h"
#include "ProviderKit/CodexSignIn/CodexExecutable.h"
#include "ProviderKit/Process/PosixCommandRunner.h"

#include <algorithm>
#include <cstdlib>
#include <future>
#include <pwd.h>
#include <unistd.h>

namespace gaugewell {

namespace {

namespace fs = std::filesystem;

std::string outputText(const std::string& bytes) {
    return std::string(trimmedWhitespaceAndNewlines(utf8WithReplacement(bytes)));
}

ProviderCollectionResult failure(const UsageCollectionRequest& request, CodexDiagnostic diagnostic) {
    return ProviderCollectionResult(codexProviderDescriptor(), request.observedAt(), {}, {},
                                    {makeDiagnostic(diagnostic)});
}

ProviderProbeResult probeResult(ProviderAvailability availability, ProviderCapabilities capabilities,
                                std::optional<std::string> sourceVersion,
                                std::vector<ProviderDiagnostic> diagnostics) {
    return ProviderProbeResult(codexProviderDescriptor(), availability, capabilities,
                               std::move(sourceVersion), std::move(diagnostics));
}

} // namespace

CodexUsageProvider::CodexUsageProvider(std::optional<fs::path> configuredExecutable,
                                       ExecutableLocator locator,
                                       std::shared_ptr<const CommandRunning> commandRunner,
                                       std::optional<fs::path> homeDirectory,
                                       std::optional<Environment> processEnvironment)
    : configuredExecutable(std::move(configuredExecutable))
    , locator(locator)
    , commandRunner(std::move(commandRunner))
    , homeDirectory(std::move(homeDirectory))
    , processEnvironment(std::move(processEnvironment)) {}

std::shared_ptr<const CodexUsageProvider>
CodexUsageProvider::makeSystemProvider(std::optional<fs::path> configuredExecutable) {
    return std::make_shared<const CodexUsageProvider>(std::move(configuredExecutable), ExecutableLocator(),
                                                      std::make_shared<const PosixCommandRunner>());
}

const ProviderDescriptor& CodexUsageProvider::descriptor() const {
    return codexProviderDescriptor();
}

fs::path CodexUsageProvider::currentHomeDirectory() const {
    if (homeDirectory) {
        return *homeDirectory;
    }
    if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') {
        return home;
    }
    passwd entry{};
    passwd* found = nullptr;
    std::vector<char> buffer(16'384);
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr &&
        found->pw_dir != nullptr) {
        return found->pw_dir;
    }
    return {};
}

Environment CodexUsageProvider::currentEnvironment() const {
    return processEnvironment ? *processEnvironment : currentProcessEnvironment();
}

std::optional<fs::path> CodexUsageProvider::resolveExecutable() const {
    return CodexExecutable::locate(locator, configuredExecutable, currentHomeDirectory(),
                                   currentEnvironment());
}

Environment CodexUsageProvider::childEnvironment(const fs::path& executable) const {
    return CodexExecutable::childEnvironment(executable, currentEnvironment());
}

Expected<CommandOutput, ProcessSupportError>
CodexUsageProvider::runTool(const fs::path& executable, const std::vector<std::string>& arguments,
                            const Environment& environment, Limits limits) const {
    if (!commandRunner) {
        return unexpected(ProcessSupportError::launchFailed);
    }
    return commandRunner->run(executable, arguments, environment, limits.timeout, limits.outputLimit);
}

ProviderProbeResult CodexUsageProvider::probe() const noexcept {
    try {
        const auto executable = resolveExecutable();
        if (!executable) {
            return probeResult(ProviderAvailability::notInstalled, {}, std::nullopt, {});
        }
        return probeExecutable(*executable);
    } catch (...) {
        return probeResult(ProviderAvailability::temporarilyUnavailable, {}, std::nullopt,
                           {makeDiagnostic(CodexDiagnostic::probeFailed)});
    }
}

ProviderProbeResult CodexUsageProvider::probeExecutable(const fs::path& executable) const {
    const Environment environment = childEnvironment(executable);
    auto helpRun = std::async(std::launch::async, [&] {
        return runTool(executable, {"app-server", "--help"}, environment, probeHelpLimits);
    });
    const auto version = runTool(executable, {"--version"}, environment, probeVersionLimits);
    const auto help = helpRun.get();
    if (!version || !help) {
        return probeResult(ProviderAvailability::temporarilyUnavailable, {}, std::nullopt,
                           {makeDiagnostic(CodexDiagnostic::probeFailed)});
    }

    std::string versionText = outputText(version->standardOutput);
    if (version->status == 0 && help->status == 0 &&
        utf8WithReplacement(help->standardOutput).find("app-server") != std::string::npos) {
        return probeResult(ProviderAvailability::availableWithLimitations,
                           {ProviderCapabilities::currentWindows, ProviderCapabilities::resetTimes,
                            ProviderCapabilities::accountTokenHistory},
                           std::move(versionText), {makeDiagnostic(CodexDiagnostic::experimentalProtocol)});
    }
    std::optional<std::string> sourceVersion;
    if (!versionText.empty()) {
        sourceVersion = std::move(versionText);
    }
    return probeResult(ProviderAvailability::unsupportedVersion, {}, std::move(sourceVersion), {});
}

ProviderCollectionResult CodexUsageProvider::collect(const UsageCollectionRequest& request) const noexcept {
    try {
        const auto executable = resolveExecutable();
        if (!executable) {
            return failure(request, CodexDiagnostic::notInstalled);
        }
        return collectWith(*executable, request);
    } catch (...) {
        return failure(request, CodexDiagnostic::collectionFailed);
    }
}

ProviderCollectionResult CodexUsageProvider::collectWith(const fs::path& executable,
                                                         const UsageCollectionRequest& request) const {
    const Environment environment = childEnvironment(executable);
    const CodexAppServerTransport transport(executable, environment, exchangeLimits.timeout,
                                            exchangeLimits.outputLimit);
    const auto response = transport.fetchUsage();
    if (!response) {
        return failure(request, diagnosticFor(response.error()));
    }

    std::optional<std::string> sourceVersion;
    if (const auto version = runTool(executable, {"--version"}, environment, collectionVersionLimits);
        version && version->status == 0) {
        if (auto text = outputText(version->standardOutput); !text.empty()) {
            sourceVersion = std::move(text);
        }
    }

    auto result =
        CodexPayloadNormalizer::normalize(response->rateLimits, response->accountUsage,
                                          request.connectionID(), request.observedAt(), sourceVersion);
    if (!result) {
        return failure(request,
                       std::visit([](const auto& error) { return diagnosticFor(error); }, result.error()));
    }
    return std::move(result).value();
}

} // namespace gaugewell
