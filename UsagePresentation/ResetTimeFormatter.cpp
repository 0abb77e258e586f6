#include "ResetTimeFormatter.h"

#include "IcuText.h"

#include <unicode/dtptngen.h>
#include <unicode/smpdtfmt.h>

namespace gaugewell {

struct IcuResetTimeFormatter::Formatter {
    std::unique_ptr<icu::SimpleDateFormat> format;
};

namespace {

// "jmm": the locale's preferred hour cycle with its day-period marker where it uses one.
std::unique_ptr<icu::SimpleDateFormat> makeFormat(const icu::Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::DateTimePatternGenerator> generator(
        icu::DateTimePatternGenerator::createInstance(locale, status));
    icu::UnicodeString pattern("HH:mm");
    if (U_SUCCESS(status)) {
        const auto best = generator->getBestPattern(icu::UnicodeString("jmm"), status);
        if (U_SUCCESS(status) && !best.isEmpty()) {
            pattern = best;
        }
    }
    status = U_ZERO_ERROR;
    auto format = std::make_unique<icu::SimpleDateFormat>(pattern, locale, status);
    if (U_FAILURE(status)) {
        return nullptr;
    }
    return format;
}

} // namespace

IcuResetTimeFormatter::IcuResetTimeFormatter()
    : IcuResetTimeFormatter(std::string(), std::string()) {}

IcuResetTimeFormatter::IcuResetTimeFormatter(const std::string& localeID, const std::string& timeZoneID)
    : formatter(std::make_unique<Formatter>()) {
    formatter->format = makeFormat(icu_support::locale(localeID));
    if (formatter->format) {
        formatter->format->adoptTimeZone(icu_support::timeZone(timeZoneID).release());
    }
}

IcuResetTimeFormatter::~IcuResetTimeFormatter() = default;

std::string IcuResetTimeFormatter::format(Date date) const {
    const std::lock_guard lock(mutex);
    if (!formatter->format) {
        return std::string();
    }
    icu::UnicodeString text;
    formatter->format->format(icu_support::udate(date), text);
    return icu_support::utf8(text);
}

} // namespace gaugewell
