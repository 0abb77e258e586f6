#pragma once

#include "Date.h"
#include "ProviderDescriptor.h"
#include "ProviderDiagnostic.h"
#include "TokenUsageBucket.h"
#include "UsageWindowSample.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace gaugewell {

// What a collection produced. A collection failed exactly when it holds an error diagnostic.
class ProviderCollectionResult {
public:
    ProviderCollectionResult(ProviderDescriptor provider, Date collectedAt,
                             std::vector<UsageWindowSample> windows,
                             std::vector<TokenUsageBucket> tokenBuckets,
                             std::vector<ProviderDiagnostic> diagnostics,
                             std::optional<Date> retryNotBefore = std::nullopt)
        : provider_(std::move(provider))
        , collectedAt_(collectedAt)
        , windows_(std::move(windows))
        , tokenBuckets_(std::move(tokenBuckets))
        , diagnostics_(std::move(diagnostics))
        , retryNotBefore_(retryNotBefore) {}

    const ProviderDescriptor& provider() const { return provider_; }
    Date collectedAt() const { return collectedAt_; }
    const std::vector<UsageWindowSample>& windows() const { return windows_; }
    const std::vector<TokenUsageBucket>& tokenBuckets() const { return tokenBuckets_; }
    const std::vector<ProviderDiagnostic>& diagnostics() const { return diagnostics_; }
    // What the service asked of a failed collection: no automatic retry before this time.
    const std::optional<Date>& retryNotBefore() const { return retryNotBefore_; }

    bool hasErrorDiagnostic() const {
        return std::any_of(diagnostics_.begin(), diagnostics_.end(),
                           [](const auto& d) { return d.severity() == DiagnosticSeverity::error; });
    }

private:
    ProviderDescriptor provider_;
    Date collectedAt_;
    std::vector<UsageWindowSample> windows_;
    std::vector<TokenUsageBucket> tokenBuckets_;
    std::vector<ProviderDiagnostic> diagnostics_;
    std::optional<Date> retryNotBefore_;
};

} // namespace gaugewell
