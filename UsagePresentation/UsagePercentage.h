#pragma once

#include "PercentageDisplayMode.h"
#include "UsageDomain/Decimal.h"

#include <cstdint>
#include <optional>
#include <string>

namespace gaugewell {

// The whole percentage shown for a used fraction: the used share, or what remains of it (never
// below 0), times 100, rounded half away from zero. A used share above 1 shows above 100 when
// consumed. Absent when the result is not a representable integer.
std::optional<std::int64_t> displayedPercentage(const Decimal& usedFraction, PercentageDisplayMode mode);
// The consumed percentage of a fraction that travelled as a double (the widget feed, alert samples),
// read back as the decimal it was written from.
std::optional<std::int64_t> displayedPercentage(double usedFraction);

// "42%", "-3%".
std::string percentageText(std::int64_t percentage);

} // namespace gaugewell
