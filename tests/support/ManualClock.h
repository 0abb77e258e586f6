#pragma once

#include "UsageDomain/Date.h"

#include <atomic>
#include <chrono>

namespace gaugewell::testing {

// A clock that moves only when the test says so; safe to read from any thread.
class ManualClock {
public:
    explicit ManualClock(Date start = dateFromSecondsSinceReferenceDate(800'000'000))
        : ticks(start.time_since_epoch().count()) {}

    Date now() const { return Date(Date::duration(ticks.load())); }
    void set(Date date) { ticks.store(date.time_since_epoch().count()); }
    void advance(double seconds) { set(addingSeconds(now(), seconds)); }

private:
    std::atomic<Date::duration::rep> ticks;
};

} // namespace gaugewell::testing
