#pragma once

#include <string>
#include <string_view>

namespace gaugewell {

// The text of a tool's output: invalid UTF-8 sequences each become U+FFFD.
std::string utf8WithReplacement(std::string_view bytes);

// Strips Unicode white space and line breaks (the White_Space property) from both ends of
// valid UTF-8.
std::string_view trimmedWhitespaceAndNewlines(std::string_view text);

} // namespace gaugewell
