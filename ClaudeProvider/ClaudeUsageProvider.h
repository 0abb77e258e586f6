#pragma once

#include "ClaudeUsageNormalizer.h"
#include "ProviderKit/ClaudeSignIn/ClaudeAccessTokenSource.h"
#include "ProviderKit/ClaudeSignIn/ClaudeEndpoints.h"
#include "ProviderKit/GaugewellProvider.h"
#include "ProviderKit/Http/HttpClient.h"

#include <chrono>
#include <memory>

namespace gaugewell {

// Claude's current usage windows, read from the account's usage endpoint with the session's token.
// Keeps nothing between calls; never fails: every problem is one diagnostic of the result.
class ClaudeUsageProvider final : public GaugewellProvider {
public:
    static constexpr std::chrono::milliseconds requestTimeout{10'000};
    static constexpr std::size_t maximumResponseBytes = 1 << 20;

    ClaudeUsageProvider(std::shared_ptr<ClaudeAccessTokenSource> oauthSession,
                        std::shared_ptr<HttpClient> http, const ClaudeEndpoints& endpoints,
                        std::chrono::milliseconds timeout = requestTimeout);

    const ProviderDescriptor& descriptor() const override;
    ProviderProbeResult probe() const noexcept override;
    ProviderCollectionResult collect(const UsageCollectionRequest& request) const noexcept override;

private:
    ProviderCollectionResult collectOrThrow(const UsageCollectionRequest& request) const;

    std::shared_ptr<ClaudeAccessTokenSource> oauthSession;
    std::shared_ptr<HttpClient> http;
    std::string usageURL;
    std::chrono::milliseconds timeout;
};

} // namespace gaugewell
