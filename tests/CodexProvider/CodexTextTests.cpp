#include "CodexProvider/CodexText.h"

#include <gtest/gtest.h>

namespace gaugewell {
namespace {

TEST(CodexText, InvalidSequencesBecomeOneReplacementEach) {
    const std::string replacement = "\xEF\xBF\xBD";
    const std::vector<std::pair<std::string, std::string>> cases{
        {"caf\xC3\xA9", "caf\xC3\xA9"},
        {"\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"},
        {"a\xFF"
         "b",
         "a" + replacement + "b"},
        {"\xC0\xAF", replacement + replacement}, // overlong lead is never valid
        {"\xE2\x82", replacement},               // truncated at the end: one maximal subpart
        {"\xE2\x82x", replacement + "x"},
        {"\xED\xA0\x80", replacement + replacement + replacement}, // surrogate: lead ok, second byte not
        {"\xF4\x90\x80\x80", replacement + replacement + replacement + replacement},
        {"\x80\x80", replacement + replacement},
    };
    for (const auto& [input, expected] : cases) {
        EXPECT_EQ(utf8WithReplacement(input), expected) << ::testing::PrintToString(input);
    }
}

TEST(CodexText, TrimsUnicodeWhiteSpaceAndLineBreaksOnly) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"  codex-cli 0.169.0\r\n", "codex-cli 0.169.0"},
        {"\t\v\f\n", ""},
        {"\xC2\xA0x\xE2\x80\xA8", "x"},     // no-break space, line separator
        {"\xE3\x80\x80x y\xC2\x85", "x y"}, // ideographic space, next line
        {"\xE2\x80\x8Bx", "\xE2\x80\x8Bx"}, // zero-width space is not white space
    };
    for (const auto& [input, expected] : cases) {
        EXPECT_EQ(trimmedWhitespaceAndNewlines(input), expected) << ::testing::PrintToString(input);
    }
}

} // namespace
} // namespace gaugewell
