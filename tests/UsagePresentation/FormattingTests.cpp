#include "RecordFixtures.h"
#include "UsagePresentation/RelativeTimeFormatter.h"
#include "UsagePresentation/ResetTimeFormatter.h"
#include "UsagePresentation/WindowDisplayName.h"

#include <gtest/gtest.h>
#include <thread>

namespace gaugewell {
namespace {

// 2026-01-01 15:45:00 UTC, a Thursday in winter.
const Date afternoon = dateFromUnixSeconds(1'767'282'300);

struct ResetTimeCase {
    std::string name;
    std::string locale;
    std::string timeZone;
    double secondsAfterAfternoon;
    std::string expected;
};

class ResetTimeFormatting : public ::testing::TestWithParam<ResetTimeCase> {};

TEST_P(ResetTimeFormatting, UsesTheLocalesHourCycleAndTheTimeZone) {
    const IcuResetTimeFormatter formatter(GetParam().locale, GetParam().timeZone);
    EXPECT_EQ(formatter.format(addingSeconds(afternoon, GetParam().secondsAfterAfternoon)),
              GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ResetTimeFormatting,
    ::testing::Values(ResetTimeCase{"Afternoon12Hour", "en_US", "UTC", 0, "3:45\u202FPM"},
                      ResetTimeCase{"Afternoon24Hour", "de_DE", "UTC", 0, "15:45"},
                      ResetTimeCase{"Midnight12Hour", "en_US", "UTC", 8 * 3600 + 20 * 60, "12:05\u202FAM"},
                      ResetTimeCase{"Midnight24Hour", "de_DE", "UTC", 8 * 3600 + 20 * 60, "00:05"},
                      ResetTimeCase{"TimeZoneApplied", "de_DE", "Europe/Berlin", 0, "16:45"},
                      ResetTimeCase{"SecondsDropped", "en_GB", "UTC", 59.9, "15:45"}),
    [](const auto& info) { return info.param.name; });

struct RelativeCase {
    std::string name;
    std::string locale;
    double secondsFromNow;
    std::string expected;
};

class RelativeTimeFormatting : public ::testing::TestWithParam<RelativeCase> {};

TEST_P(RelativeTimeFormatting, UsesTheLargestWholeUnit) {
    const RelativeTimeFormatter formatter(GetParam().locale, "UTC");
    EXPECT_EQ(formatter.format(addingSeconds(afternoon, GetParam().secondsFromNow), afternoon),
              GetParam().expected);
}

constexpr double minute = 60;
constexpr double hour = 3600;
constexpr double day = 86400;

INSTANTIATE_TEST_SUITE_P(
    Cases, RelativeTimeFormatting,
    ::testing::Values(RelativeCase{"Now", "en_US", 0, "in 0 sec."},
                      RelativeCase{"Seconds", "en_US", 30, "in 30 sec."},
                      RelativeCase{"MinutesAgo", "en_US", -5 * minute, "5 min. ago"},
                      RelativeCase{"HoursTruncated", "en_US", 2 * hour + 59 * minute, "in 2 hr."},
                      RelativeCase{"Day", "en_US", day + hour, "in 1 day"},
                      RelativeCase{"Days", "en_US", 3 * day, "in 3 days"},
                      RelativeCase{"DaysAgo", "en_US", -2 * day, "2 days ago"},
                      RelativeCase{"Week", "en_US", 10 * day, "in 1 wk."},
                      RelativeCase{"Month", "en_US", 40 * day, "in 1 mo."},
                      RelativeCase{"Year", "en_US", 400 * day, "in 1 yr."},
                      RelativeCase{"GermanHours", "de_DE", 2 * hour, "in 2 Std."},
                      RelativeCase{"GermanMinutesAgo", "de_DE", -5 * minute, "vor 5 Min."}),
    [](const auto& info) { return info.param.name; });

TEST(RelativeTimeFormatterTest, CalendarDaysFollowTheTimeZone) {
    // 23:30 to 00:30 the next day: one hour, whatever the date line says.
    const Date lateEvening = dateFromUnixSeconds(1'767'310'200);
    const RelativeTimeFormatter formatter("en_US", "UTC");
    EXPECT_EQ(formatter.format(addingSeconds(lateEvening, hour), lateEvening), "in 1 hr.");
}

TEST(RelativeTimeFormatterTest, ConcurrentUseGivesStableTexts) {
    const RelativeTimeFormatter relative("en_US", "UTC");
    const IcuResetTimeFormatter reset("en_US", "UTC");
    std::vector<std::thread> threads;
    std::atomic<int> mismatches{0};
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            for (int round = 0; round < 200; ++round) {
                const double offset = (thread + 1) * hour;
                if (relative.format(addingSeconds(afternoon, offset), afternoon) !=
                        "in " + std::to_string(thread + 1) + " hr." ||
                    reset.format(afternoon) != "3:45\u202FPM") {
                    mismatches.fetch_add(1);
                }
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(mismatches.load(), 0);
}

TEST(WindowDisplayNameTest, ProviderNameFirstThenTheKindsName) {
    const std::vector<std::pair<UsageWindowKind, std::string>> kinds{
        {UsageWindowKind::fiveHour, "Five-hour"},
        {UsageWindowKind::sevenDay, "Weekly"},
        {UsageWindowKind::modelSpecific, "Model"},
        {UsageWindowKind::custom, "Usage"},
        {UsageWindowKind::unknown, "Usage"}};
    for (const auto& [kind, name] : kinds) {
        const auto base = testing::minimalSample();
        const UsageWindowSample sample(
            base.id(), base.connectionID(), base.providerBucketID(), std::nullopt, kind, std::nullopt,
            base.observedAt(), std::nullopt, std::nullopt, std::nullopt, std::nullopt, std::nullopt,
            std::nullopt, std::nullopt, std::nullopt, std::nullopt, std::nullopt, base.authority(),
            base.confidence(), base.coverage(), base.freshness(), base.source(), std::nullopt);
        EXPECT_EQ(windowDisplayName(sample), name);
    }
    EXPECT_EQ(windowDisplayName(testing::fullSample()), "5-hour limit");
}

} // namespace
} // namespace gaugewell
