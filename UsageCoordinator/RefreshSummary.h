#pragma once

#include "ProviderRefreshOutcome.h"
#include "RefreshTrigger.h"
#include "UsageDomain/Date.h"

#include <string>
#include <vector>

namespace gaugewell {

// The result of one refresh: outcomes sorted by provider id, skipped ids sorted.
class RefreshSummary {
public:
    RefreshSummary(RefreshTrigger trigger, Date startedAt, std::vector<ProviderRefreshOutcome> outcomes,
                   std::vector<std::string> skippedProviderIDs)
        : trigger_(trigger)
        , startedAt_(startedAt)
        , outcomes_(std::move(outcomes))
        , skippedProviderIDs_(std::move(skippedProviderIDs)) {}

    RefreshTrigger trigger() const { return trigger_; }
    Date startedAt() const { return startedAt_; }
    const std::vector<ProviderRefreshOutcome>& outcomes() const { return outcomes_; }
    const std::vector<std::string>& skippedProviderIDs() const { return skippedProviderIDs_; }

private:
    RefreshTrigger trigger_;
    Date startedAt_;
    std::vector<ProviderRefreshOutcome> outcomes_;
    std::vector<std::string> skippedProviderIDs_;
};

} // namespace gaugewell
