#include "UsageAlertEvaluator.h"

#include <cmath>
#include <unordered_set>

namespace gaugewell {

namespace {

// A drop from at least 20 % to at most 5 % means a fresh window, also when the provider gives no
// reset time to compare.
constexpr double resetDropFrom = 0.2;
constexpr double resetDropTo = 0.05;

std::vector<int> percentages(const std::vector<double>& thresholds) {
    std::set<int> sorted;
    for (const double threshold : thresholds) {
        const double percentage = std::round(threshold * 100); // halves away from zero
        if (std::isfinite(percentage) && percentage >= 0 && percentage <= 100'000) {
            sorted.insert(static_cast<int>(percentage));
        }
    }
    return {sorted.begin(), sorted.end()};
}

bool wasReset(const UsageAlertEvaluator::WindowState& previous, const UsageAlertSample& sample) {
    if (previous.resetAt && sample.resetAt && *previous.resetAt != *sample.resetAt) {
        return true;
    }
    return previous.usedFraction >= resetDropFrom && sample.usedFraction <= resetDropTo;
}

} // namespace

std::size_t UsageAlertEvaluator::WindowKeyHash::operator()(const WindowKey& key) const noexcept {
    const std::size_t provider = std::hash<std::string>{}(key.providerID);
    return provider ^ (std::hash<std::string>{}(key.bucketID) + 0x9e3779b97f4a7c15ULL + (provider << 6) +
                       (provider >> 2));
}

std::vector<UsageAlertEvent> UsageAlertEvaluator::evaluate(const std::vector<UsageAlertSample>& samples,
                                                           bool enabled,
                                                           const std::vector<double>& thresholds,
                                                           bool notifiesOnReset) {
    if (!enabled) {
        states_.clear();
        return {};
    }
    const std::vector<int> sortedPercentages = percentages(thresholds);
    std::unordered_set<WindowKey, WindowKeyHash> seen;
    std::vector<UsageAlertEvent> events;

    for (const auto& sample : samples) {
        WindowKey key{sample.providerID, sample.bucketID};
        seen.insert(key);
        std::set<int> crossed;
        for (const int percentage : sortedPercentages) {
            if (percentage / 100.0 <= sample.usedFraction) {
                crossed.insert(percentage);
            }
        }

        const auto existing = states_.find(key);
        if (existing == states_.end()) {
            // Thresholds already exceeded at first sight are never announced.
            states_.emplace(std::move(key),
                            WindowState{sample.usedFraction, sample.resetAt, std::move(crossed)});
            continue;
        }
        WindowState& state = existing->second;
        if (wasReset(state, sample)) {
            if (notifiesOnReset) {
                events.push_back(UsageAlertEvent::reset(sample));
            }
            state.acknowledgedThresholds = std::move(crossed);
        } else {
            std::optional<int> highest;
            for (const int percentage : crossed) {
                if (!state.acknowledgedThresholds.contains(percentage) &&
                    state.usedFraction < percentage / 100.0) {
                    highest = percentage; // ascending, so the last one is the highest
                }
            }
            if (highest) {
                events.push_back(UsageAlertEvent::threshold(sample, *highest));
            }
            state.acknowledgedThresholds.insert(crossed.begin(), crossed.end());
        }
        state.usedFraction = sample.usedFraction;
        state.resetAt = sample.resetAt;
    }

    std::erase_if(states_, [&seen](const auto& entry) { return !seen.contains(entry.first); });
    return events;
}

} // namespace gaugewell
