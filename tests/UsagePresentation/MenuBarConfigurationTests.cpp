#include "Platform/InMemoryUserDefaults.h"
#include "UsagePresentation/MenuBarConfiguration.h"

#include <functional>
#include <gtest/gtest.h>

namespace gaugewell {
namespace {

const std::string codexID = "app.gaugewell.codex.subscription";
const std::string claudeID = "app.gaugewell.claude.subscription";

MenuBarConfiguration defaultConfiguration() {
    return MenuBarConfiguration{.enabledProviderIDs = {codexID, claudeID},
                                .providerOrder = {codexID, claudeID},
                                .iconsOnly = false,
                                .showPercentage = true,
                                .percentageMode = PercentageDisplayMode::consumed,
                                .showResetTime = true,
                                .selectedWindowKind = UsageWindowKind::fiveHour,
                                .density = MenuBarDensity::compact};
}

struct ReadingCase {
    std::string name;
    std::vector<std::pair<std::string, UserDefaultsValue>> stored;
    // Applied to the all-defaults configuration to give the expected one.
    std::function<void(MenuBarConfiguration&)> expectedChange;
};

class MenuBarConfigurationReading : public ::testing::TestWithParam<ReadingCase> {};

TEST_P(MenuBarConfigurationReading, FollowsTheReadingRules) {
    InMemoryUserDefaults defaults;
    for (const auto& [key, value] : GetParam().stored) {
        ASSERT_TRUE(defaults.set(key, value));
    }
    auto expected = defaultConfiguration();
    GetParam().expectedChange(expected);
    EXPECT_EQ(MenuBarConfiguration::fromDefaults(defaults), expected);
}

using S = std::string;

INSTANTIATE_TEST_SUITE_P(
    Keys, MenuBarConfigurationReading,
    ::testing::Values(
        ReadingCase{"NothingStored", {}, [](auto&) {}},
        ReadingCase{
            "CodexHidden", {{"menu.showCodex", false}}, [](auto& c) { c.enabledProviderIDs = {claudeID}; }},
        ReadingCase{"BothHidden",
                    {{"menu.showCodex", false}, {"menu.showClaude", false}},
                    [](auto& c) { c.enabledProviderIDs.clear(); }},
        // Only a stored Boolean can turn off a setting whose default is on.
        ReadingCase{"ShowClaudeAsStringStaysOn", {{"menu.showClaude", S("false")}}, [](auto&) {}},
        ReadingCase{"ShowPercentageAsStringStaysOn", {{"menu.showPercentage", S("no")}}, [](auto&) {}},
        ReadingCase{"ShowResetAsZeroStaysOn", {{"menu.showReset", 0.0}}, [](auto&) {}},
        ReadingCase{
            "PercentageOff", {{"menu.showPercentage", false}}, [](auto& c) { c.showPercentage = false; }},
        ReadingCase{"ResetOff", {{"menu.showReset", false}}, [](auto& c) { c.showResetTime = false; }},
        // The icons-only switch reads leniently.
        ReadingCase{"IconsOnlyBoolean", {{"menu.iconsOnly", true}}, [](auto& c) { c.iconsOnly = true; }},
        ReadingCase{"IconsOnlyYes", {{"menu.iconsOnly", S("yes")}}, [](auto& c) { c.iconsOnly = true; }},
        ReadingCase{"IconsOnlyOtherText", {{"menu.iconsOnly", S("on")}}, [](auto&) {}},
        ReadingCase{"Remaining",
                    {{"menu.percentageMode", S("remaining")}},
                    [](auto& c) { c.percentageMode = PercentageDisplayMode::remaining; }},
        ReadingCase{"RemainingIsCaseSensitive", {{"menu.percentageMode", S("Remaining")}}, [](auto&) {}},
        ReadingCase{"WeeklyWindow",
                    {{"menu.windowKind", S("sevenDay")}},
                    [](auto& c) { c.selectedWindowKind = UsageWindowKind::sevenDay; }},
        ReadingCase{"UnknownWindowKindFallsBack", {{"menu.windowKind", S("weekly")}}, [](auto&) {}},
        ReadingCase{"UnknownKindIsAKind",
                    {{"menu.windowKind", S("unknown")}},
                    [](auto& c) { c.selectedWindowKind = UsageWindowKind::unknown; }},
        ReadingCase{"Detailed",
                    {{"menu.density", S("detailed")}},
                    [](auto& c) { c.density = MenuBarDensity::detailed; }},
        ReadingCase{"DensityIsCaseSensitive", {{"menu.density", S("Detailed")}}, [](auto&) {}},
        ReadingCase{"OrderClaudeOnly",
                    {{"menu.providerOrder", S("claude")}},
                    [](auto& c) { c.providerOrder = {claudeID}; }},
        ReadingCase{"OrderDropsUnknownAndEmptyPieces",
                    {{"menu.providerOrder", S("gemini,,claude,")}},
                    [](auto& c) { c.providerOrder = {claudeID}; }},
        ReadingCase{"OrderIsNotTrimmedNorCaseFolded",
                    {{"menu.providerOrder", S(" codex,Claude")}},
                    [](auto& c) { c.providerOrder.clear(); }},
        ReadingCase{"OrderKeepsDuplicates",
                    {{"menu.providerOrder", S("claude,codex,claude")}},
                    [](auto& c) {
                        c.providerOrder = {claudeID, codexID, claudeID};
                    }},
        ReadingCase{
            "EmptyOrderIsEmpty", {{"menu.providerOrder", S("")}}, [](auto& c) { c.providerOrder.clear(); }},
        ReadingCase{"OrderOfAnotherTypeReadsAsAbsent", {{"menu.providerOrder", true}}, [](auto&) {}}),
    [](const auto& info) { return info.param.name; });

} // namespace
} // namespace gaugewell
