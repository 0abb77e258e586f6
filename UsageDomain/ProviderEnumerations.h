#pragma once

#include "RawValue.h"

namespace gaugewell {

enum class ProviderAvailability {
    available,
    availableWithLimitations,
    notInstalled,
    authenticationRequired,
    unsupportedVersion,
    permissionRequired,
    temporarilyUnavailable,
};

enum class DiagnosticSeverity { info, warning, error };

template <> struct RawValues<ProviderAvailability> {
    static constexpr std::array<std::string_view, 7> names{
        "available",          "availableWithLimitations", "notInstalled",          "authenticationRequired",
        "unsupportedVersion", "permissionRequired",       "temporarilyUnavailable"};
};
template <> struct RawValues<DiagnosticSeverity> {
    static constexpr std::array<std::string_view, 3> names{"info", "warning", "error"};
};

} // namespace gaugewell
