#pragma once

#include "ProviderRegistration.h"
#include "RefreshBackoffPolicy.h"
#include "RefreshSummary.h"
#include "RefreshTrigger.h"
#include "UsageDomain/Date.h"

#include <cstdint>
#include <functional>
#include <future>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace gaugewell {

// Decides which providers a refresh collects, collects them in parallel, merges overlapping
// refreshes into one and backs off providers whose collections keep failing.
//
// The mutex guards state only and is never held across a collection: while a refresh runs,
// further calls wait on its shared future and `nextAutomaticRefreshDate` answers at once.
class RefreshCoordinator {
public:
    using Clock = std::function<Date()>;

    RefreshCoordinator(std::vector<ProviderRegistration> registrations, RefreshBackoffPolicy backoffPolicy,
                       Clock now);

    // Blocks until the refresh is done. A call made while another refresh runs gets that
    // refresh's summary (its own trigger is dropped). Safe from any thread, concurrently.
    RefreshSummary refresh(RefreshTrigger trigger);

    // The provider's backoff date, in the past or not; absent when it is not backing off.
    std::optional<Date> nextAutomaticRefreshDate(const std::string& providerID) const;

private:
    struct BackoffState {
        std::int64_t failureCount;
        Date nextAutomaticRefreshAt;
    };

    std::vector<ProviderRefreshOutcome> collect(const std::vector<const ProviderRegistration*>& chosen,
                                                Date startedAt) const;
    void applyBackoff(const RefreshSummary& summary);

    const std::vector<ProviderRegistration> registrations;
    const RefreshBackoffPolicy backoffPolicy;
    const Clock now;

    mutable std::mutex mutex;
    std::unordered_map<std::string, BackoffState> backoffByProviderID;
    std::optional<std::shared_future<RefreshSummary>> inFlight;
};

} // namespace gaugewell
