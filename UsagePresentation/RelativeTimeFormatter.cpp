#include "RelativeTimeFormatter.h"

#include "IcuText.h"

#include <array>
#include <unicode/calendar.h>
#include <unicode/reldatefmt.h>

namespace gaugewell {

struct RelativeTimeFormatter::Formatter {
    std::unique_ptr<icu::RelativeDateTimeFormatter> format;
    std::unique_ptr<icu::Calendar> calendar;
};

namespace {

struct UnitField {
    UCalendarDateFields field;
    URelativeDateTimeUnit unit;
};

// Largest first; weeks after months so that "in 3 wk." covers what is left of a month.
constexpr std::array<UnitField, 7> units{{
    {UCAL_YEAR, UDAT_REL_UNIT_YEAR},
    {UCAL_MONTH, UDAT_REL_UNIT_MONTH},
    {UCAL_WEEK_OF_YEAR, UDAT_REL_UNIT_WEEK},
    {UCAL_DATE, UDAT_REL_UNIT_DAY},
    {UCAL_HOUR_OF_DAY, UDAT_REL_UNIT_HOUR},
    {UCAL_MINUTE, UDAT_REL_UNIT_MINUTE},
    {UCAL_SECOND, UDAT_REL_UNIT_SECOND},
}};

} // namespace

RelativeTimeFormatter::RelativeTimeFormatter()
    : RelativeTimeFormatter(std::string(), std::string()) {}

RelativeTimeFormatter::RelativeTimeFormatter(const std::string& localeID, const std::string& timeZoneID)
    : formatter(std::make_unique<Formatter>()) {
    const auto locale = icu_support::locale(localeID);
    UErrorCode status = U_ZERO_ERROR;
    auto format = std::make_unique<icu::RelativeDateTimeFormatter>(locale, nullptr, UDAT_STYLE_SHORT,
                                                                   UDISPCTX_CAPITALIZATION_NONE, status);
    if (U_SUCCESS(status)) {
        formatter->format = std::move(format);
    }
    status = U_ZERO_ERROR;
    std::unique_ptr<icu::Calendar> calendar(
        icu::Calendar::createInstance(icu_support::timeZone(timeZoneID).release(), locale, status));
    if (U_SUCCESS(status)) {
        formatter->calendar = std::move(calendar);
    }
}

RelativeTimeFormatter::~RelativeTimeFormatter() = default;

std::string RelativeTimeFormatter::format(Date date, Date reference) const {
    const std::lock_guard lock(mutex);
    if (!formatter->format || !formatter->calendar) {
        return std::string();
    }
    icu::Calendar& calendar = *formatter->calendar;
    UErrorCode status = U_ZERO_ERROR;
    calendar.setTime(icu_support::udate(reference), status);
    const double target = icu_support::udate(date);
    double offset = 0;
    URelativeDateTimeUnit unit = UDAT_REL_UNIT_SECOND;
    // Each difference moves the calendar forward by the whole units counted, leaving the rest
    // for the smaller units.
    for (const auto& candidate : units) {
        const int32_t difference = calendar.fieldDifference(target, candidate.field, status);
        if (U_FAILURE(status)) {
            return std::string();
        }
        if (difference != 0) {
            offset = difference;
            unit = candidate.unit;
            break;
        }
    }
    icu::UnicodeString text;
    if (offset == 0) {
        // Within the second: "now" rather than "in 0 sec.".
        formatter->format->format(UDAT_DIRECTION_PLAIN, UDAT_ABSOLUTE_NOW, text, status);
        return U_SUCCESS(status) ? icu_support::utf8(text) : std::string();
    }
    formatter->format->formatNumeric(offset, unit, text, status);
    return U_SUCCESS(status) ? icu_support::utf8(text) : std::string();
}

} // namespace gaugewell
