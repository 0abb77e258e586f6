#pragma once

#include "CodexAppServerTransport.h"
#include "ProviderKit/Process/ChildProcess.h"

#include <chrono>
#include <string_view>

namespace gaugewell {

// Internal to the module: performs one app-server exchange on the calling thread. One instance
// serves one exchange; CodexAppServerTransport is the public face.
class BlockingAppServerOperation {
public:
    BlockingAppServerOperation(std::filesystem::path executable, Environment environment,
                               double timeoutSeconds, std::int64_t outputLimit);

    Expected<CodexAppServerResponse, CodexProviderError> run();

private:
    enum class Progress { continuing, finished };

    Expected<CodexAppServerResponse, CodexProviderError> exchange(ChildProcess& child);
    Expected<Progress, CodexProviderError> handleLine(ChildProcess& child, std::string_view line);
    CodexAppServerResponse response();

    const std::filesystem::path executable;
    const Environment environment;
    const double timeoutSeconds;
    const std::int64_t outputLimit;

    bool initialized = false;
    std::optional<std::string> rateLimits;
    std::optional<std::string> accountUsage;
    bool usageAnswered = false;
};

} // namespace gaugewell
