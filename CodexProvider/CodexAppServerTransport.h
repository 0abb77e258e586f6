#pragma once

#include "CodexProviderError.h"
#include "ProviderKit/Process/Environment.h"
#include "UsageDomain/Expected.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace gaugewell {

// The raw response lines of one exchange, without their line feeds.
struct CodexAppServerResponse {
    std::string rateLimits;
    // Absent when the usage request was answered with an error, or the exchange ended after the
    // rate limits but before this answer.
    std::optional<std::string> accountUsage;
};

// One usage exchange with `codex app-server --stdio`: initialize, initialized, then the rate-limit
// and account-usage requests; one child per exchange, gone when the exchange returns.
class CodexAppServerTransport {
public:
    CodexAppServerTransport(std::filesystem::path executable, Environment environment,
                            std::chrono::milliseconds timeout, std::int64_t outputLimit)
        : executable_(std::move(executable))
        , environment_(std::move(environment))
        , timeout_(timeout)
        , outputLimit_(outputLimit) {}

    // Blocks for at most the time-out (counted from the start of the child), plus the time to
    // stop it. Safe to call from several threads: exchanges share nothing.
    Expected<CodexAppServerResponse, CodexProviderError> fetchUsage() const;

    const std::filesystem::path& executable() const { return executable_; }
    const Environment& environment() const { return environment_; }
    std::chrono::milliseconds timeout() const { return timeout_; }
    std::int64_t outputLimit() const { return outputLimit_; }

    // How long a child that ignores SIGTERM is given before it is killed.
    static constexpr std::chrono::milliseconds terminationGrace{250};

private:
    std::filesystem::path executable_;
    Environment environment_;
    std::chrono::milliseconds timeout_;
    std::int64_t outputLimit_;
};

} // namespace gaugewell
