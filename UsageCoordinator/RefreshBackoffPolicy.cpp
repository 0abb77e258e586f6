#include "RefreshBackoffPolicy.h"

#include <algorithm>
#include <cmath>

namespace gaugewell {

double RefreshBackoffPolicy::delayAfter(long long failureCount) const {
    const long long exponent = std::clamp<long long>(failureCount, 1, 21) - 1;
    const double delay = std::ldexp(initialDelay_, static_cast<int>(exponent));
    return delay > maximumDelay_ ? maximumDelay_ : delay;
}

} // namespace gaugewell
