#pragma once

#include "UsageDomain/RawValue.h"

namespace gaugewell {

// Why a refresh was asked for. Only `manual` overrides backoff.
enum class RefreshTrigger { manual, scheduled, providerFileChanged, appBecameActive };

template <> struct RawValues<RefreshTrigger> {
    static constexpr std::array<std::string_view, 4> names{"manual", "scheduled", "providerFileChanged",
                                                           "appBecameActive"};
};

} // namespace gaugewell
