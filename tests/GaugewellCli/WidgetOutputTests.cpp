#include "UsageDomain/JsonValue.h"
#include "app/WidgetOutput.h"

#include <gtest/gtest.h>

namespace gaugewell {
namespace {

WidgetUsageSnapshot snapshot(double codexUsed, double claudeUsed) {
    const Date now = std::chrono::system_clock::now();
    return WidgetUsageSnapshot(
        now,
        {WidgetProviderUsage(WidgetProviderService::codex, WidgetProviderState::available,
                             {WidgetWindow("primary", "Five-hour", codexUsed, now + std::chrono::hours(2)),
                              WidgetWindow("secondary", "Weekly", 0.1, std::nullopt)}),
         WidgetProviderUsage(WidgetProviderService::claude, WidgetProviderState::available,
                             {WidgetWindow("five_hour", "Five-hour", claudeUsed, std::nullopt)})});
}

JsonValue waybar(const WidgetUsageSnapshot& value) {
    const auto line = widgetOutput(value, WidgetOutputFormat::waybar, value.updatedAt());
    EXPECT_EQ(line.find('\n'), std::string::npos) << "waybar reads one line";
    auto parsed = parseJson(line);
    EXPECT_TRUE(parsed.hasValue()) << line;
    return parsed ? parsed.value() : JsonValue();
}

TEST(WidgetOutput, WaybarClassFollowsTheHighestWindow) {
    for (const auto& [codex, claude, cssClass, percentage] :
         std::vector<std::tuple<double, double, std::string, std::int64_t>>{{0.42, 0.17, "normal", 42},
                                                                            {0.2, 0.75, "warning", 75},
                                                                            {0.9, 0.1, "critical", 90},
                                                                            {1.0, 1.0, "critical", 100}}) {
        const auto line = waybar(snapshot(codex, claude));
        EXPECT_EQ(*line.find("class")->stringValue(), cssClass) << codex << " " << claude;
        EXPECT_EQ(line.find("percentage")->int64Value(), percentage);
    }
    const auto line = waybar(snapshot(0.42, 0.17));
    EXPECT_EQ(*line.find("text")->stringValue(), "Codex 42% \u00b7 Claude 17%");
    EXPECT_NE(line.find("tooltip")->stringValue()->find("Weekly 10% used"), std::string::npos);
}

TEST(WidgetOutput, SignedOutProvidersAndTheUnavailableLine) {
    const WidgetUsageSnapshot signedOut(
        std::chrono::system_clock::now(),
        {WidgetProviderUsage(WidgetProviderService::codex, WidgetProviderState::signInRequired, {}),
         WidgetProviderUsage(WidgetProviderService::claude, WidgetProviderState::unavailable, {})});
    const auto line = waybar(signedOut);
    EXPECT_EQ(*line.find("text")->stringValue(), "Codex sign-in \u00b7 Claude \u2014");
    EXPECT_EQ(*line.find("class")->stringValue(), "unavailable");
    EXPECT_EQ(widgetOutput(signedOut, WidgetOutputFormat::text, signedOut.updatedAt()),
              "Codex: sign in with `gaugewell connect codex`\nClaude: no usage available");
    const auto unavailable = parseJson(waybarUnavailableLine("Gaugewell is not running."));
    ASSERT_TRUE(unavailable.hasValue());
    EXPECT_EQ(*unavailable->find("tooltip")->stringValue(), "Gaugewell is not running.");
    EXPECT_EQ(*unavailable->find("class")->stringValue(), "unavailable");
}

TEST(WidgetOutput, JsonIsTheFeedsOwnForm) {
    const auto value = snapshot(0.5, 0.5);
    EXPECT_EQ(widgetOutput(value, WidgetOutputFormat::json, value.updatedAt()), value.json());
    EXPECT_EQ(widgetOutputFormat("waybar"), WidgetOutputFormat::waybar);
    EXPECT_FALSE(widgetOutputFormat("yaml").has_value());
}

} // namespace
} // namespace gaugewell
