#include "WidgetDate.h"

#include <cmath>
#include <cstdint>

namespace gaugewell {

namespace {

using Ticks = WidgetDate::duration;
static_assert(std::is_same_v<Ticks::period, std::nano>, "conversions below count nanoseconds");

constexpr std::int64_t nanosPerSecond = 1'000'000'000;
constexpr std::int64_t referenceUnixSeconds = 978'307'200;
constexpr double secondsLimit = 9.2e9; // about the range of int64 nanoseconds around the reference date

} // namespace

double widgetSecondsSinceReferenceDate(WidgetDate date) {
    // Whole seconds and the fraction apart, so that the double keeps all it can.
    const std::int64_t ticks = date.time_since_epoch().count();
    std::int64_t whole = ticks / nanosPerSecond;
    std::int64_t remainder = ticks % nanosPerSecond;
    if (remainder < 0) {
        remainder += nanosPerSecond;
        whole -= 1;
    }
    return static_cast<double>(whole - referenceUnixSeconds) +
           static_cast<double>(remainder) / nanosPerSecond;
}

WidgetDate widgetDateFromSecondsSinceReferenceDate(double seconds) {
    if (std::isnan(seconds)) {
        seconds = 0;
    }
    const double unixSeconds = seconds + static_cast<double>(referenceUnixSeconds);
    if (unixSeconds >= secondsLimit) {
        return WidgetDate::max();
    }
    if (unixSeconds <= -secondsLimit) {
        return WidgetDate::min();
    }
    const double whole = std::floor(seconds);
    const auto fraction = static_cast<std::int64_t>(std::llround((seconds - whole) * nanosPerSecond));
    const std::int64_t wholeUnix = static_cast<std::int64_t>(whole) + referenceUnixSeconds;
    return WidgetDate(Ticks(wholeUnix * nanosPerSecond + fraction));
}

} // namespace gaugewell
