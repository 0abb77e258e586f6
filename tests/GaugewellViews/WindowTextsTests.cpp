#include "GaugewellUI/Views/DesignSystem/WindowTexts.h"
#include "UsagePresentation/RelativeTimeFormatter.h"
#include "ViewTestSupport.h"

namespace gaugewell {
namespace {

using testing::windowSample;

class WindowTextsTest : public ::testing::Test {
protected:
    void SetUp() override { testing::widgetApplication(); }
    RelativeTimeFormatter relative{"en_US", "UTC"};
    Date now = testing::referencePlus(1000);
};

TEST_F(WindowTextsTest, StandardWindowsTakeTheKindsNameOthersTheProvidersOwn) {
    EXPECT_EQ(WindowTexts::label(windowSample({.kind = UsageWindowKind::fiveHour, .name = "Five-hour"})),
              "Session");
    EXPECT_EQ(WindowTexts::label(windowSample({.kind = UsageWindowKind::sevenDay, .name = "Seven-day"})),
              "Weekly");
    EXPECT_EQ(
        WindowTexts::label(windowSample({.kind = UsageWindowKind::modelSpecific, .name = "Opus weekly"})),
        "Opus weekly");
    EXPECT_EQ(WindowTexts::label(windowSample({.kind = UsageWindowKind::modelSpecific, .name = ""})),
              "Model");
    EXPECT_EQ(WindowTexts::label(windowSample({.kind = UsageWindowKind::unknown})), "Window");
}

TEST_F(WindowTextsTest, AWindowWithoutAResetHasNotStartedOnlyWhenNothingIsUsed) {
    const auto idle = windowSample({.used = "0"});
    const auto unknown = windowSample({.used = "0.3"});
    const auto blank = windowSample({});
    const auto running = windowSample({.used = "0", .resetAt = 1000 + 2 * 3600});
    EXPECT_EQ(WindowTexts::resetText(idle, now, relative), "Not started");
    EXPECT_EQ(WindowTexts::resetText(unknown, now, relative), "Unknown");
    EXPECT_EQ(WindowTexts::resetText(blank, now, relative), "Unknown");
    EXPECT_EQ(WindowTexts::resetText(running, now, relative), "Resets in 2 hr.");
    EXPECT_EQ(WindowTexts::thisWindowPhrase(idle), "this Session window");
}

TEST_F(WindowTextsTest, AccessibleTextsSayWhenTheShareIsMissing) {
    EXPECT_EQ(WindowTexts::accessibleDescription(windowSample({.used = "0.415", .resetAt = 1000 + 3600}), now,
                                                 relative),
              "Session, 42% used, resets in 1 hr.");
    EXPECT_EQ(WindowTexts::accessibleDescription(windowSample({}), now, relative),
              "Session, no data used, resets Unknown");
    EXPECT_EQ(WindowTexts::ringAccessibleValue(42, "Weekly"), "42 percent Weekly");
    EXPECT_EQ(WindowTexts::ringAccessibleValue(std::nullopt, "Weekly"), "Usage unavailable");
    EXPECT_EQ(WindowTexts::percentText(windowSample({}), PercentageDisplayMode::remaining), "\u2014");
}

TEST_F(WindowTextsTest, BadgeSaysCachedForACachedFigureAndNothingForALiveOne) {
    const auto with = [](MeasurementAuthority authority, MeasurementFreshness freshness) {
        const auto base = windowSample({});
        return UsageWindowSample(base.id(), base.connectionID(), base.providerBucketID(), std::nullopt,
                                 base.windowKind(), std::nullopt, base.observedAt(), std::nullopt,
                                 std::nullopt, std::nullopt, std::nullopt, std::nullopt, std::nullopt,
                                 std::nullopt, std::nullopt, std::nullopt, std::nullopt, authority,
                                 MeasurementConfidence::exact, MeasurementCoverage::account, freshness,
                                 base.source(), std::nullopt);
    };
    EXPECT_EQ(WindowTexts::freshnessBadge(
                  with(MeasurementAuthority::vendorAuthoritative, MeasurementFreshness::live)),
              std::nullopt);
    EXPECT_EQ(
        WindowTexts::freshnessBadge(with(MeasurementAuthority::vendorCached, MeasurementFreshness::live)),
        "CACHED");
    EXPECT_EQ(WindowTexts::freshnessBadge(
                  with(MeasurementAuthority::vendorAuthoritative, MeasurementFreshness::stale)),
              "stale");
    EXPECT_EQ(
        WindowTexts::freshnessBadge(with(MeasurementAuthority::estimated, MeasurementFreshness::unknown)),
        "unknown");
}

TEST_F(WindowTextsTest, PeriodTooltipSpansTheWindowOrSaysThereIsNoReset) {
    const auto base = windowSample({.used = "0.1"});
    EXPECT_EQ(WindowTexts::periodTooltip(base), "No reset time reported");
    // Five hours ending at 2001-01-01 15:00 UTC.
    const UsageWindowSample session(base.id(), base.connectionID(), base.providerBucketID(), std::nullopt,
                                    base.windowKind(), std::nullopt, base.observedAt(), std::nullopt, 18000,
                                    std::nullopt, std::nullopt, testing::referencePlus(15 * 3600),
                                    base.usedFraction(), std::nullopt, std::nullopt, std::nullopt,
                                    std::nullopt, base.authority(), base.confidence(), base.coverage(),
                                    base.freshness(), base.source(), std::nullopt);
    EXPECT_EQ(WindowTexts::periodTooltip(session), "This window runs 10:00 AM – 3:00 PM");
}

} // namespace
} // namespace gaugewell
