#include "UsagePercentage.h"

#include <algorithm>
#include <cmath>

namespace gaugewell {

std::optional<std::int64_t> displayedPercentage(const Decimal& usedFraction, PercentageDisplayMode mode) {
    const double used = usedFraction.toDouble();
    const double share = mode == PercentageDisplayMode::consumed ? used : std::max(0.0, 1.0 - used);
    const double rounded = std::round(share * 100);
    // 2^63: the first double outside the signed 64-bit range.
    constexpr double limit = 9223372036854775808.0;
    if (!std::isfinite(rounded) || rounded < -limit || rounded >= limit) {
        return std::nullopt;
    }
    return static_cast<std::int64_t>(rounded);
}

std::string percentageText(std::int64_t percentage) {
    return std::to_string(percentage) + "%";
}

} // namespace gaugewell
