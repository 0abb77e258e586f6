#pragma once

#include "UsageDomain/Date.h"

#include <optional>
#include <string_view>

namespace gaugewell {

// Strict RFC 3339 date-time: "2026-11-22T14:05:09Z", "2026-11-22T14:05:09.250+01:00". The separator and
// the zone letter may be lower case; fractional seconds are optional and kept to the nanosecond; the
// offset is "Z" or "+hh:mm"/"-hh:mm". No locale, no time-zone database, no leap seconds, no other forms.
std::optional<Date> parseInternetDateTime(std::string_view text);

} // namespace gaugewell
