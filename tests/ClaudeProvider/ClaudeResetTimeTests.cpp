#include "ClaudeProvider/InternetDateTime.h"

#include <gtest/gtest.h>

namespace gaugewell {
namespace {

constexpr std::int64_t second = 1'000'000'000;
constexpr std::int64_t base = 1'795'370'400 * second; // 2026-11-22T18:00:00Z

TEST(ClaudeResetTimes, ParsesStrictRfc3339) {
    const struct {
        const char* text;
        std::int64_t unixNanoseconds;
    } accepted[] = {
        {"2026-11-22T18:00:00Z", base},
        {"2026-11-22T18:00:00.123+00:00", base + 123'000'000},
        {"2026-11-22T18:00:00.1234567891Z", base + 123'456'789},
        {"2026-11-22T19:30:00+01:30", base},
        {"2026-11-22T12:00:00-06:00", base},
        {"2026-11-22t18:00:00z", base},
        {"1969-12-31T23:59:59.5Z", -second / 2},
        {"2024-02-29T00:00:00Z", 1'709'164'800 * second},
    };
    for (const auto& [text, unixNanoseconds] : accepted) {
        const auto parsed = parseInternetDateTime(text);
        ASSERT_TRUE(parsed) << text;
        EXPECT_EQ(std::chrono::nanoseconds(parsed->time_since_epoch()).count(), unixNanoseconds) << text;
    }
    for (const char* text : {"2023-02-29T00:00:00Z", "2026-13-01T00:00:00Z", "2026-11-31T00:00:00Z",
                             "2026-11-22T24:00:00Z", "2026-11-22T18:60:00Z", "2026-11-22T18:00:60Z",
                             "2026-11-22T18:00:00", "2026-11-22 18:00:00Z", "2026-11-22T18:00Z",
                             "2026-11-22T18:00:00.Z", "2026-11-22T18:00:00+0100", "2026-11-22T18:00:00+24:00",
                             "2026-11-22T18:00:00Z ", "+2026-11-22T18:00:00Z", "9999-12-31T23:59:59Z"}) {
        EXPECT_FALSE(parseInternetDateTime(text)) << text;
    }
}

} // namespace
} // namespace gaugewell
