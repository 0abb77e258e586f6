#include "UsagePercentage.h"

#include <algorithm>
#include <limits>

namespace gaugewell {

std::optional<std::int64_t> displayedPercentage(const Decimal& usedFraction, PercentageDisplayMode mode) {
    // In decimals throughout: a provider's 28.5 % must show 29, which `round(0.285 * 100)` does not.
    const Decimal used = usedFraction.multipliedBy100();
    if (mode == PercentageDisplayMode::consumed) {
        return used.roundedInteger();
    }
    if (used >= Decimal(100)) {
        return 0;
    }
    // round(100 - used) with halves up is 100 - used rounded with halves down; no subtraction, which
    // could need more digits than a Decimal holds.
    const auto rounded = used.roundedInteger(Decimal::Halves::down);
    if (!rounded || *rounded < std::numeric_limits<std::int64_t>::min() + 100) {
        return std::nullopt;
    }
    return std::max<std::int64_t>(0, 100 - *rounded);
}

std::optional<std::int64_t> displayedPercentage(double usedFraction) {
    const auto exact = Decimal::shortest(usedFraction);
    return exact ? displayedPercentage(*exact, PercentageDisplayMode::consumed) : std::nullopt;
}

std::string percentageText(std::int64_t percentage) {
    return std::to_string(percentage) + "%";
}

} // namespace gaugewell
