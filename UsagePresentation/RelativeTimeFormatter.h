#pragma once

#include "UsageDomain/Date.h"

#include <memory>
#include <mutex>
#include <string>

namespace gaugewell {

// Short numeric relative times: "in 2 hr.", "5 min. ago", "now" (en_US). The largest calendar unit
// that is not zero is used and the count is truncated toward zero, so 2 h 59 min reads "in 2 hr.".
// Thread-safe.
class RelativeTimeFormatter {
public:
    // The user's locale and time zone.
    RelativeTimeFormatter();
    // ICU locale id ("en_US", "de_DE") and Olson time zone id ("UTC"); the time zone decides where
    // calendar days and months begin.
    RelativeTimeFormatter(const std::string& localeID, const std::string& timeZoneID);
    ~RelativeTimeFormatter();

    // `date` as seen from `reference` (normally now).
    std::string format(Date date, Date reference) const;

private:
    struct Formatter;
    // ICU calendars are mutable while computing differences.
    mutable std::mutex mutex;
    std::unique_ptr<Formatter> formatter;
};

} // namespace gaugewell
