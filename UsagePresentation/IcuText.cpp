#include "IcuText.h"

namespace gaugewell::icu_support {

icu::Locale locale(const std::string& localeID) {
    return localeID.empty() ? icu::Locale::getDefault() : icu::Locale(localeID.c_str());
}

std::unique_ptr<icu::TimeZone> timeZone(const std::string& timeZoneID) {
    if (timeZoneID.empty()) {
        return std::unique_ptr<icu::TimeZone>(icu::TimeZone::createDefault());
    }
    // An unknown id yields ICU's "Etc/Unknown", which behaves as UTC.
    return std::unique_ptr<icu::TimeZone>(
        icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(timeZoneID)));
}

double udate(Date date) {
    return static_cast<double>(
        std::chrono::duration_cast<std::chrono::milliseconds>(date.time_since_epoch()).count());
}

std::string utf8(const icu::UnicodeString& text) {
    std::string result;
    text.toUTF8String(result);
    return result;
}

} // namespace gaugewell::icu_support
