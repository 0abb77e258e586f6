#pragma once

#include "RawValue.h"

namespace gaugewell {

enum class UsageWindowKind { fiveHour, sevenDay, modelSpecific, custom, unknown };
enum class UsageUnit { tokens, requests, usDollars };
enum class MeasurementAuthority {
    vendorAuthoritative,
    vendorCached,
    locallyMeasured,
    locallyCalculated,
    estimated
};
enum class MeasurementConfidence { exact, high, partial, low, unavailable };
enum class MeasurementCoverage { account, organization, device, processSession, conversation, unknown };
enum class MeasurementFreshness { live, recent, stale, unknown };

template <> struct RawValues<UsageWindowKind> {
    static constexpr std::array<std::string_view, 5> names{"fiveHour", "sevenDay", "modelSpecific", "custom",
                                                           "unknown"};
};
template <> struct RawValues<UsageUnit> {
    static constexpr std::array<std::string_view, 3> names{"tokens", "requests", "usDollars"};
};
template <> struct RawValues<MeasurementAuthority> {
    static constexpr std::array<std::string_view, 5> names{
        "vendorAuthoritative", "vendorCached", "locallyMeasured", "locallyCalculated", "estimated"};
};
template <> struct RawValues<MeasurementConfidence> {
    static constexpr std::array<std::string_view, 5> names{"exact", "high", "partial", "low", "unavailable"};
};
template <> struct RawValues<MeasurementCoverage> {
    static constexpr std::array<std::string_view, 6> names{"account",        "organization", "device",
                                                           "processSession", "conversation", "unknown"};
};
template <> struct RawValues<MeasurementFreshness> {
    static constexpr std::array<std::string_view, 4> names{"live", "recent", "stale", "unknown"};
};

} // namespace gaugewell
