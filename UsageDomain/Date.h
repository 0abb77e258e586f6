#pragma once

#include <chrono>

namespace gaugewell {

using Date = std::chrono::system_clock::time_point;

// Dates cross JSON as seconds since 2001-01-01T00:00:00Z, a double.
inline constexpr std::chrono::seconds referenceDateOffsetFromUnixEpoch{978'307'200};

double secondsSinceReferenceDate(Date date);
// Out-of-range values saturate at the representable limits; NaN gives the reference date.
Date dateFromSecondsSinceReferenceDate(double seconds);
Date dateFromUnixSeconds(double seconds);
// Adds a possibly large or fractional number of seconds, saturating instead of overflowing.
Date addingSeconds(Date date, double seconds);

} // namespace gaugewell
