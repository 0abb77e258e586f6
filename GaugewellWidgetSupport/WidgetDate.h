#pragma once

#include <chrono>

namespace gaugewell {

// The widget module links alone, so it keeps its own copy of the date convention:
// seconds since 2001-01-01T00:00:00Z as a double.
using WidgetDate = std::chrono::system_clock::time_point;

double widgetSecondsSinceReferenceDate(WidgetDate date);
// Saturates at the representable limits; NaN gives the reference date.
WidgetDate widgetDateFromSecondsSinceReferenceDate(double seconds);

} // namespace gaugewell
