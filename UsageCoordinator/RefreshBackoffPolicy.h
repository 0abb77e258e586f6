#pragma once

namespace gaugewell {

// Delays in seconds: the first after one failure, and the ceiling.
class RefreshBackoffPolicy {
public:
    constexpr RefreshBackoffPolicy(double initialDelay, double maximumDelay)
        : initialDelay_(initialDelay)
        , maximumDelay_(maximumDelay) {}

    constexpr double initialDelay() const { return initialDelay_; }
    constexpr double maximumDelay() const { return maximumDelay_; }

    // The wait after `failureCount` consecutive failures (at least 1): doubling from the
    // initial delay, the exponent stopping at 2^20, never above the maximum.
    double delayAfter(long long failureCount) const;

private:
    double initialDelay_;
    double maximumDelay_;
};

} // namespace gaugewell
