#pragma once

#include "ProviderKit/Authentication/ProviderService.h"
#include "UsageDomain/ProviderCapabilities.h"
#include "UsageDomain/ProviderDescriptor.h"
#include "UsageDomain/ProviderDiagnostic.h"
#include "UsageDomain/ProviderEnumerations.h"
#include "UsageDomain/TokenUsageBucket.h"
#include "UsageDomain/UsageWindowSample.h"

#include <vector>

namespace gaugewell {

// What the interface shows for one service after a refresh.
struct ProviderViewState {
    ProviderService service;
    ProviderDescriptor descriptor;
    ProviderAvailability availability;
    ProviderCapabilities capabilities;
    std::vector<UsageWindowSample> windows;
    std::vector<TokenUsageBucket> tokenBuckets;
    std::vector<ProviderDiagnostic> diagnostics;

    // The latest sample of each provider bucket, ordered by window kind and then bucket id.
    std::vector<UsageWindowSample> currentWindows() const;
};

// One bar of the daily token chart.
struct HistoryPoint {
    std::string id;
    ProviderService service;
    std::string providerName;
    Date date; // start of the local calendar day
    std::int64_t tokens;

    bool operator==(const HistoryPoint&) const = default;
};

} // namespace gaugewell
