#include "FormattingLocale.h"

#include <algorithm>
#include <unicode/locid.h>

namespace gaugewell {

void setFormattingLanguage(const std::string& languageTag) {
    if (languageTag.empty()) {
        return;
    }
    // "de_DE" as Qt names it, or "de-DE".
    std::string id = languageTag;
    std::replace(id.begin(), id.end(), '-', '_');
    const icu::Locale wanted(id.c_str());
    if (wanted.isBogus() || std::string(wanted.getLanguage()).empty()) {
        return;
    }
    UErrorCode status = U_ZERO_ERROR;
    // The language from the user's choice, the region (and with it the clock format) from the locale.
    const icu::Locale current = icu::Locale::getDefault();
    icu::Locale::setDefault(icu::Locale(wanted.getLanguage(), current.getCountry()), status);
}

} // namespace gaugewell
