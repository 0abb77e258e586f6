#include "Date.h"

#include <cmath>
#include <cstdint>

namespace gaugewell {

namespace {

using Ticks = Date::duration;
static_assert(std::is_same_v<Ticks::period, std::nano>, "conversions below count nanoseconds");

constexpr std::int64_t nanosPerSecond = 1'000'000'000;
const Ticks referenceTicks = std::chrono::duration_cast<Ticks>(referenceDateOffsetFromUnixEpoch);

// Whole seconds and the fraction are converted apart so that a double's full precision
// survives the trip to nanoseconds and back.
constexpr double secondsLimit = 9.2e9; // about the range of int64 nanoseconds

Ticks ticksFromSeconds(double seconds) {
    const double whole = std::floor(seconds);
    const auto fraction = static_cast<std::int64_t>(std::llround((seconds - whole) * nanosPerSecond));
    return Ticks(static_cast<std::int64_t>(whole) * nanosPerSecond + fraction);
}

double secondsFromTicks(Ticks ticks) {
    std::int64_t whole = ticks.count() / nanosPerSecond;
    std::int64_t remainder = ticks.count() % nanosPerSecond;
    if (remainder < 0) {
        remainder += nanosPerSecond;
        whole -= 1;
    }
    return static_cast<double>(whole) + static_cast<double>(remainder) / nanosPerSecond;
}

} // namespace

double secondsSinceReferenceDate(Date date) {
    return secondsFromTicks(date.time_since_epoch() - referenceTicks);
}

Date dateFromSecondsSinceReferenceDate(double seconds) {
    return addingSeconds(Date(referenceTicks), seconds);
}

Date dateFromUnixSeconds(double seconds) {
    return addingSeconds(Date(), seconds);
}

Date addingSeconds(Date date, double seconds) {
    if (std::isnan(seconds)) {
        return date;
    }
    if (seconds >= secondsLimit) {
        return Date::max();
    }
    if (seconds <= -secondsLimit) {
        return Date::min();
    }
    const Ticks base = date.time_since_epoch();
    const Ticks offset = ticksFromSeconds(seconds);
    if (offset > Ticks::zero() && base > Ticks::max() - offset) {
        return Date(Ticks::max());
    }
    if (offset < Ticks::zero() && base < Ticks::min() - offset) {
        return Date(Ticks::min());
    }
    return Date(base + offset);
}

} // namespace gaugewell
