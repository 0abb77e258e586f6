#pragma once

#include "UsageDomain/Date.h"

#include <memory>
#include <mutex>
#include <string>

namespace gaugewell {

// Renders the time of day at which a window resets. Injected so that callers and tests
// choose the locale and time zone.
class ResetTimeFormatter {
public:
    virtual ~ResetTimeFormatter() = default;
    virtual std::string format(Date date) const = 0;
};

// Hour and minute in the locale's own pattern ("3:45 PM", "15:45"). Thread-safe.
class IcuResetTimeFormatter final : public ResetTimeFormatter {
public:
    // The user's locale and time zone.
    IcuResetTimeFormatter();
    // ICU locale id ("en_US", "de_DE") and Olson time zone id ("UTC", "Europe/Berlin").
    IcuResetTimeFormatter(const std::string& localeID, const std::string& timeZoneID);
    ~IcuResetTimeFormatter() override;

    std::string format(Date date) const override;

private:
    struct Formatter;
    // ICU date formats keep a mutable calendar, so one format at a time.
    mutable std::mutex mutex;
    std::unique_ptr<Formatter> formatter;
};

} // namespace gaugewell
