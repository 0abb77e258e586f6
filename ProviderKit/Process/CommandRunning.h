#pragma once

#include "ProviderKit/Process/Environment.h"
#include "UsageDomain/Expected.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace gaugewell {

enum class ProcessSupportError { launchFailed, timedOut, outputLimitExceeded };

// The only text an error of the runner ever has.
constexpr std::string_view describe(ProcessSupportError error) {
    switch (error) {
    case ProcessSupportError::launchFailed:
        return "The provider executable could not be started.";
    case ProcessSupportError::timedOut:
        return "The provider executable did not respond before the deadline.";
    case ProcessSupportError::outputLimitExceeded:
        return "The provider executable exceeded the safe output limit.";
    }
    return "";
}

struct CommandOutput {
    int status = 0; // exit code, or the signal number that ended the child
    std::string standardOutput;
    std::string standardError;
};

// Runs an executable to completion within a deadline and a combined output limit.
// A seam: the authentication manager and the Codex provider are tested with substitutes.
class CommandRunning {
public:
    virtual ~CommandRunning() = default;
    // Blocks the calling thread; `environment` is the child's whole environment.
    virtual Expected<CommandOutput, ProcessSupportError> run(const std::filesystem::path& executable,
                                                             const std::vector<std::string>& arguments,
                                                             const Environment& environment,
                                                             std::chrono::milliseconds timeout,
                                                             std::int64_t outputLimit) const = 0;
};

} // namespace gaugewell
