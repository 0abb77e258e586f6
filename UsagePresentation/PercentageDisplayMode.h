#pragma once

#include "UsageDomain/RawValue.h"

namespace gaugewell {

// Whether the menu bar shows the used share of an allowance or what is left of it.
enum class PercentageDisplayMode { consumed, remaining };

template <> struct RawValues<PercentageDisplayMode> {
    static constexpr std::array<std::string_view, 2> names{"consumed", "remaining"};
};

} // namespace gaugewell
