#pragma once

#include "UsageDomain/Date.h"

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace gaugewell {

// One allowance window as the alerts see it after a refresh.
struct UsageAlertSample {
    std::string providerID;
    std::string providerName;
    std::string bucketID;
    std::string windowName;
    double usedFraction;
    std::optional<Date> resetAt;

    bool operator==(const UsageAlertSample&) const = default;
};

// Something worth telling the user about one window.
class UsageAlertEvent {
public:
    enum class Kind { threshold, reset };

    // `percentage` is one of the configured thresholds, as a whole percentage.
    static UsageAlertEvent threshold(UsageAlertSample sample, int percentage) {
        return UsageAlertEvent(Kind::threshold, std::move(sample), percentage);
    }
    static UsageAlertEvent reset(UsageAlertSample sample) {
        return UsageAlertEvent(Kind::reset, std::move(sample), std::nullopt);
    }

    Kind kind() const { return kind_; }
    const UsageAlertSample& sample() const { return sample_; }
    // Present for threshold events only.
    std::optional<int> percentage() const { return percentage_; }

    bool operator==(const UsageAlertEvent&) const = default;

private:
    UsageAlertEvent(Kind kind, UsageAlertSample sample, std::optional<int> percentage)
        : kind_(kind)
        , sample_(std::move(sample))
        , percentage_(percentage) {}

    Kind kind_;
    UsageAlertSample sample_;
    std::optional<int> percentage_;
};

// Decides, refresh by refresh, which windows newly crossed a threshold and which were reset.
// Holds the last value seen per window in memory only.
class UsageAlertEvaluator {
public:
    struct WindowKey {
        std::string providerID;
        std::string bucketID;

        bool operator==(const WindowKey&) const = default;
    };

    struct WindowState {
        double usedFraction;
        std::optional<Date> resetAt;
        // Percentages already announced, or already exceeded when the window was first seen.
        std::set<int> acknowledgedThresholds;

        bool operator==(const WindowState&) const = default;
    };

    struct WindowKeyHash {
        std::size_t operator()(const WindowKey& key) const noexcept;
    };
    using States = std::unordered_map<WindowKey, WindowState, WindowKeyHash>;

    // At most one event per sample, in sample order. `thresholds` are fractions (0.5 for 50 %).
    // Switching off forgets every window, so switching on again starts from first sightings.
    std::vector<UsageAlertEvent> evaluate(const std::vector<UsageAlertSample>& samples, bool enabled,
                                          const std::vector<double>& thresholds, bool notifiesOnReset);

    const States& states() const { return states_; }

private:
    States states_;
};

} // namespace gaugewell
