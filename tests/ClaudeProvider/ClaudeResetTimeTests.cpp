#include "ProviderKit/InternetDateTime.h"

#include <gtest/gtest.h>
#include <ostream>

namespace gaugewell {
namespace {

struct DateCase {
    std::string text;
    std::optional<std::int64_t> unixNanoseconds;
};

void PrintTo(const DateCase& date, std::ostream* out) {
    *out << date.text;
}

class InternetDateTimeParsing : public ::testing::TestWithParam<DateCase> {};

TEST_P(InternetDateTimeParsing, ParsesStrictRfc3339) {
    const auto parsed = parseInternetDateTime(GetParam().text);
    if (!GetParam().unixNanoseconds) {
        EXPECT_FALSE(parsed.has_value()) << GetParam().text;
        return;
    }
    ASSERT_TRUE(parsed.has_value()) << GetParam().text;
    EXPECT_EQ(std::chrono::duration_cast<std::chrono::nanoseconds>(parsed->time_since_epoch()).count(),
              *GetParam().unixNanoseconds)
        << GetParam().text;
}

constexpr std::int64_t second = 1'000'000'000;
// 2026-11-22T18:00:00Z
constexpr std::int64_t base = 1'795'370'400 * second;

INSTANTIATE_TEST_SUITE_P(
    ClaudeResetTimes, InternetDateTimeParsing,
    ::testing::Values(
        DateCase{"2026-11-22T18:00:00Z", base}, DateCase{"2026-11-22T18:00:00.123+00:00", base + 123'000'000},
        DateCase{"2026-11-22T18:00:00.123456789Z", base + 123'456'789},
        DateCase{"2026-11-22T18:00:00.1234567891Z", base + 123'456'789},
        DateCase{"2026-11-22T19:30:00+01:30", base}, DateCase{"2026-11-22T12:00:00-06:00", base},
        DateCase{"2026-11-22t18:00:00z", base}, DateCase{"1970-01-01T00:00:00Z", 0},
        DateCase{"1969-12-31T23:59:59.5Z", -second / 2},
        DateCase{"2024-02-29T00:00:00Z", 1'709'164'800 * second},
        DateCase{"2023-02-29T00:00:00Z", std::nullopt}, DateCase{"2026-13-01T00:00:00Z", std::nullopt},
        DateCase{"2026-11-31T00:00:00Z", std::nullopt}, DateCase{"2026-11-22T24:00:00Z", std::nullopt},
        DateCase{"2026-11-22T18:60:00Z", std::nullopt}, DateCase{"2026-11-22T18:00:60Z", std::nullopt},
        DateCase{"2026-11-22T18:00:00", std::nullopt}, DateCase{"2026-11-22 18:00:00Z", std::nullopt},
        DateCase{"2026-11-22T18:00Z", std::nullopt}, DateCase{"2026-11-22T18:00:00.Z", std::nullopt},
        DateCase{"2026-11-22T18:00:00+0100", std::nullopt},
        DateCase{"2026-11-22T18:00:00+24:00", std::nullopt}, DateCase{"2026-11-22T18:00:00Z ", std::nullopt},
        DateCase{"+2026-11-22T18:00:00Z", std::nullopt},
        DateCase{"9999-12-31T23:59:59Z", std::nullopt}, // beyond what a Date holds
        DateCase{"next Tuesday", std::nullopt}, DateCase{"", std::nullopt}));

} // namespace
} // namespace gaugewell
