#pragma once

#include "UsageDomain/Date.h"

#include <memory>
#include <string>
#include <unicode/locid.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

namespace gaugewell::icu_support {

// An empty id means the process's default (the user's locale, the system time zone).
icu::Locale locale(const std::string& localeID);
std::unique_ptr<icu::TimeZone> timeZone(const std::string& timeZoneID);

// ICU's UDate: milliseconds since 1970 as a double.
double udate(Date date);

std::string utf8(const icu::UnicodeString& text);

} // namespace gaugewell::icu_support
