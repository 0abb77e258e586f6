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

TEST(MenuBarConfiguration, FollowsTheReadingRules) {
    using S = std::string;
    const struct {
        const char* name;
        std::vector<std::pair<std::string, UserDefaultsValue>> stored;
        // Applied to the all-defaults configuration to give the expected one.
        std::function<void(MenuBarConfiguration&)> expectedChange;
    } cases[] = {
        {"NothingStored", {}, [](auto&) {}},
        {"CodexHidden", {{"menu.showCodex", false}}, [](auto& c) { c.enabledProviderIDs = {claudeID}; }},
        {"BothHidden",
         {{"menu.showCodex", false}, {"menu.showClaude", false}},
         [](auto& c) { c.enabledProviderIDs.clear(); }},
        // Only a stored Boolean can turn off a setting whose default is on.
        {"ShowClaudeAsStringStaysOn", {{"menu.showClaude", S("false")}}, [](auto&) {}},
        {"ShowPercentageAsStringStaysOn", {{"menu.showPercentage", S("no")}}, [](auto&) {}},
        {"ShowResetAsZeroStaysOn", {{"menu.showReset", 0.0}}, [](auto&) {}},
        {"PercentageOff", {{"menu.showPercentage", false}}, [](auto& c) { c.showPercentage = false; }},
        {"ResetOff", {{"menu.showReset", false}}, [](auto& c) { c.showResetTime = false; }},
        // The icons-only switch reads leniently.
        {"IconsOnlyBoolean", {{"menu.iconsOnly", true}}, [](auto& c) { c.iconsOnly = true; }},
        {"IconsOnlyYes", {{"menu.iconsOnly", S("yes")}}, [](auto& c) { c.iconsOnly = true; }},
        {"IconsOnlyOtherText", {{"menu.iconsOnly", S("on")}}, [](auto&) {}},
        {"Remaining",
         {{"menu.percentageMode", S("remaining")}},
         [](auto& c) { c.percentageMode = PercentageDisplayMode::remaining; }},
        {"RemainingIsCaseSensitive", {{"menu.percentageMode", S("Remaining")}}, [](auto&) {}},
        {"WeeklyWindow",
         {{"menu.windowKind", S("sevenDay")}},
         [](auto& c) { c.selectedWindowKind = UsageWindowKind::sevenDay; }},
        {"UnknownWindowKindFallsBack", {{"menu.windowKind", S("weekly")}}, [](auto&) {}},
        {"UnknownKindIsAKind",
         {{"menu.windowKind", S("unknown")}},
         [](auto& c) { c.selectedWindowKind = UsageWindowKind::unknown; }},
        {"Detailed",
         {{"menu.density", S("detailed")}},
         [](auto& c) { c.density = MenuBarDensity::detailed; }},
        {"DensityIsCaseSensitive", {{"menu.density", S("Detailed")}}, [](auto&) {}},
        {"OrderClaudeOnly",
         {{"menu.providerOrder", S("claude")}},
         [](auto& c) { c.providerOrder = {claudeID}; }},
        {"OrderDropsUnknownAndEmptyPieces",
         {{"menu.providerOrder", S("gemini,,claude,")}},
         [](auto& c) { c.providerOrder = {claudeID}; }},
        {"OrderIsNotTrimmedNorCaseFolded",
         {{"menu.providerOrder", S(" codex,Claude")}},
         [](auto& c) { c.providerOrder.clear(); }},
        {"OrderKeepsDuplicates",
         {{"menu.providerOrder", S("claude,codex,claude")}},
         [](auto& c) {
             c.providerOrder = {claudeID, codexID, claudeID};
         }},
        {"EmptyOrderIsEmpty", {{"menu.providerOrder", S("")}}, [](auto& c) { c.providerOrder.clear(); }},
        {"OrderOfAnotherTypeReadsAsAbsent", {{"menu.providerOrder", true}}, [](auto&) {}},
    };
    for (const auto& [name, stored, expectedChange] : cases) {
        SCOPED_TRACE(name);
        InMemoryUserDefaults defaults;
        for (const auto& [key, value] : stored) {
            ASSERT_TRUE(defaults.set(key, value));
        }
        auto expected = defaultConfiguration();
        expectedChange(expected);
        EXPECT_EQ(MenuBarConfiguration::fromDefaults(defaults), expected);
    }
}

} // namespace
} // namespace gaugewell
