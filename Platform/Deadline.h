#pragma once

#include <algorithm>
#include <chrono>
#include <climits>

namespace gaugewell {

// A point on the monotonic clock by which a wait must end. Every poll loop, child-process wait
// and socket read takes one, so that each call site states its time-out once, as a duration.
class Deadline {
public:
    using Clock = std::chrono::steady_clock;

    // Negative timeouts have already passed; huge ones stop at a year instead of overflowing.
    template <class Rep, class Period> static Deadline after(std::chrono::duration<Rep, Period> timeout) {
        if (timeout <= timeout.zero()) {
            return Deadline(Clock::now());
        }
        if (timeout >= longest) { // compared in the coarser unit, so nothing overflows
            return Deadline(Clock::now() + longest);
        }
        return Deadline(Clock::now() + std::chrono::duration_cast<Clock::duration>(timeout));
    }
    static Deadline at(Clock::time_point moment) { return Deadline(moment); }

    Clock::time_point timePoint() const { return moment; }
    bool hasPassed() const { return Clock::now() >= moment; }
    Clock::duration remaining() const { return std::max(moment - Clock::now(), Clock::duration::zero()); }

    // What poll(2) wants: milliseconds rounded up (a wait never ends a moment early and then
    // spins), never negative, never beyond INT_MAX.
    int pollMilliseconds() const {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(remaining()).count();
        return static_cast<int>(std::min<long long>(left, INT_MAX));
    }

    // The earlier of two deadlines.
    Deadline earliest(Deadline other) const { return Deadline(std::min(moment, other.moment)); }

private:
    static constexpr std::chrono::hours longest{24 * 365};

    explicit Deadline(Clock::time_point moment)
        : moment(moment) {}

    Clock::time_point moment;
};

} // namespace gaugewell
