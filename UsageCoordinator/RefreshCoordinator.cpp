#include "RefreshCoordinator.h"

#include <algorithm>
#include <limits>
#include <system_error>
#include <thread>

namespace gaugewell {

RefreshCoordinator::RefreshCoordinator(std::vector<ProviderRegistration> registrations,
                                       RefreshBackoffPolicy backoffPolicy, Clock now)
    : registrations(std::move(registrations))
    , backoffPolicy(backoffPolicy)
    , now(std::move(now)) {}

RefreshSummary RefreshCoordinator::refresh(RefreshTrigger trigger) {
    std::unique_lock lock(mutex);
    if (inFlight) {
        const auto running = *inFlight;
        lock.unlock();
        return running.get();
    }

    const Date startedAt = now();
    std::vector<const ProviderRegistration*> chosen;
    std::vector<std::string> skipped;
    for (const auto& registration : registrations) {
        const auto& id = registration.provider().descriptor().id();
        const auto backoff = backoffByProviderID.find(id);
        const bool due = trigger == RefreshTrigger::manual || backoff == backoffByProviderID.end() ||
                         backoff->second.nextAutomaticRefreshAt <= startedAt;
        if (due) {
            chosen.push_back(&registration);
        } else {
            skipped.push_back(id);
        }
    }
    // A provider registered twice with one chosen is not skipped.
    std::erase_if(skipped, [&](const std::string& id) {
        return std::any_of(chosen.begin(), chosen.end(), [&](const auto* registration) {
            return registration->provider().descriptor().id() == id;
        });
    });
    std::sort(skipped.begin(), skipped.end());

    std::promise<RefreshSummary> promise;
    inFlight = promise.get_future().share();
    lock.unlock();

    RefreshSummary summary(trigger, startedAt, collect(chosen, startedAt), std::move(skipped));

    lock.lock();
    inFlight.reset();
    applyBackoff(summary);
    lock.unlock();
    promise.set_value(summary);
    return summary;
}

std::vector<ProviderRefreshOutcome>
RefreshCoordinator::collect(const std::vector<const ProviderRegistration*>& chosen, Date startedAt) const {
    std::mutex outcomesMutex;
    std::vector<ProviderRefreshOutcome> outcomes;
    outcomes.reserve(chosen.size());

    const auto collectOne = [&](const ProviderRegistration* registration) {
        const auto& provider = registration->provider();
        auto result = provider.collect(UsageCollectionRequest(registration->connectionID(), startedAt));
        const std::lock_guard guard(outcomesMutex);
        outcomes.emplace_back(provider.descriptor().id(), std::move(result));
    };

    std::vector<std::thread> workers;
    workers.reserve(chosen.size());
    for (const auto* registration : chosen) {
        try {
            workers.emplace_back(collectOne, registration);
        } catch (const std::system_error&) {
            collectOne(registration); // out of threads: still collect, just not in parallel
        }
    }
    for (auto& worker : workers) {
        worker.join();
    }

    std::stable_sort(outcomes.begin(), outcomes.end(), [](const auto& left, const auto& right) {
        return left.providerID() < right.providerID();
    });
    return outcomes;
}

void RefreshCoordinator::applyBackoff(const RefreshSummary& summary) {
    for (const auto& outcome : summary.outcomes()) {
        if (!outcome.providerFailed()) {
            backoffByProviderID.erase(outcome.providerID());
            continue;
        }
        const auto existing = backoffByProviderID.find(outcome.providerID());
        const std::int64_t previous =
            existing == backoffByProviderID.end() ? 0 : existing->second.failureCount;
        const std::int64_t failures =
            previous == std::numeric_limits<std::int64_t>::max() ? previous : previous + 1;
        Date next = addingSeconds(summary.startedAt(), backoffPolicy.delayAfter(failures));
        if (const auto& asked = outcome.collection().retryNotBefore(); asked && *asked > next) {
            next = *asked; // the service's own Retry-After outlasts our backoff
        }
        backoffByProviderID[outcome.providerID()] = BackoffState{failures, next};
    }
}

std::optional<Date> RefreshCoordinator::nextAutomaticRefreshDate(const std::string& providerID) const {
    const std::lock_guard guard(mutex);
    const auto entry = backoffByProviderID.find(providerID);
    if (entry == backoffByProviderID.end()) {
        return std::nullopt;
    }
    return entry->second.nextAutomaticRefreshAt;
}

} // namespace gaugewell
