#include "RecordFixtures.h"
#include "UsagePresentation/RelativeTimeFormatter.h"
#include "UsagePresentation/ResetTimeFormatter.h"
#include "UsagePresentation/UsagePercentage.h"
#include "UsagePresentation/WindowDisplayName.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>

namespace gaugewell {
namespace {

// 2026-01-01 15:45:00 UTC, a Thursday in winter.
const Date afternoon = dateFromUnixSeconds(1'767'282'300);

TEST(UsagePercentageTest, HalfPercentsRoundAwayFromZeroInBothModes) {
    for (int whole = 0; whole < 100; ++whole) {
        const std::string used = std::to_string(whole) + ".5";
        const auto fraction = Decimal::parse(used)->dividedBy100();
        SCOPED_TRACE(used);
        EXPECT_EQ(displayedPercentage(fraction, PercentageDisplayMode::consumed), whole + 1);
        EXPECT_EQ(displayedPercentage(fraction, PercentageDisplayMode::remaining), 100 - whole);
        // The feed and the alerts carry doubles; they show the same.
        EXPECT_EQ(displayedPercentage(fraction.toDouble()), whole + 1);
    }
    EXPECT_EQ(displayedPercentage(*Decimal::parse("0.28499"), PercentageDisplayMode::consumed), 28);
    EXPECT_EQ(displayedPercentage(*Decimal::parse("1e-120"), PercentageDisplayMode::remaining), 100);
    EXPECT_EQ(displayedPercentage(*Decimal::parse("-0.005"), PercentageDisplayMode::remaining), 101);
}

TEST(ResetTimeFormatterTest, UsesTheLocalesHourCycleAndTheTimeZone) {
    const struct {
        const char* locale;
        const char* timeZone;
        double secondsAfterAfternoon;
        std::string expected;
    } cases[] = {
        {"en_US", "UTC", 0, "3:45\u202FPM"},
        {"de_DE", "UTC", 0, "15:45"},
        {"de_DE", "Europe/Berlin", 0, "16:45"},
        {"en_GB", "UTC", 59.9, "15:45"}, // seconds dropped
    };
    for (const auto& [locale, timeZone, seconds, expected] : cases) {
        const IcuResetTimeFormatter formatter(locale, timeZone);
        EXPECT_EQ(formatter.format(addingSeconds(afternoon, seconds)), expected)
            << locale << ' ' << timeZone << " +" << seconds;
    }
}

constexpr double minute = 60;
constexpr double hour = 3600;
constexpr double day = 86400;

TEST(RelativeTimeFormatterTest, UsesTheLargestWholeUnit) {
    const struct {
        const char* locale;
        double secondsFromNow;
        std::string expected;
    } cases[] = {
        {"en_US", 0, "now"},
        {"en_US", 30, "in 30 sec."},
        {"en_US", -5 * minute, "5 min. ago"},
        {"en_US", 2 * hour + 59 * minute, "in 2 hr."}, // truncated
        {"en_US", day + hour, "in 1 day"},
        {"en_US", 10 * day, "in 1 wk."},
        {"en_US", 40 * day, "in 1 mo."},
        {"en_US", 400 * day, "in 1 yr."},
        {"de_DE", 2 * hour, "in 2 Std."},
    };
    for (const auto& [locale, seconds, expected] : cases) {
        const RelativeTimeFormatter formatter(locale, "UTC");
        EXPECT_EQ(formatter.format(addingSeconds(afternoon, seconds), afternoon), expected)
            << locale << ' ' << seconds;
    }
}

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
    const std::pair<UsageWindowKind, std::string> kinds[] = {{UsageWindowKind::fiveHour, "Five-hour"},
                                                             {UsageWindowKind::sevenDay, "Weekly"},
                                                             {UsageWindowKind::modelSpecific, "Model"},
                                                             {UsageWindowKind::custom, "Usage"},
                                                             {UsageWindowKind::unknown, "Usage"}};
    for (const auto& [kind, name] : kinds) {
        EXPECT_EQ(windowKindDisplayName(kind), name);
    }
    EXPECT_EQ(windowDisplayName(testing::minimalSample()), "Five-hour"); // no name of its own
    EXPECT_EQ(windowDisplayName(testing::fullSample()), "5-hour limit");
}

} // namespace
} // namespace gaugewell
