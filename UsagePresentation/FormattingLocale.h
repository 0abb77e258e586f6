#pragma once

#include <string>

namespace gaugewell {

// Makes reset times and relative times ("vor 2 Min.") speak the language the windows speak, when
// that differs from the locale the environment gives (LANGUAGE=de with LANG=en_US). Call before
// any formatter is made; an empty or unknown id changes nothing.
void setFormattingLanguage(const std::string& languageTag);

} // namespace gaugewell
