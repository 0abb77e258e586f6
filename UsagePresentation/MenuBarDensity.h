#pragma once

#include "UsageDomain/RawValue.h"

namespace gaugewell {

// `detailed` puts the provider's display name into its menu-bar text.
enum class MenuBarDensity { compact, detailed };

template <> struct RawValues<MenuBarDensity> {
    static constexpr std::array<std::string_view, 2> names{"compact", "detailed"};
};

} // namespace gaugewell
