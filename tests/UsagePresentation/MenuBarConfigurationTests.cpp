#include "Platform/InMemoryUserDefaults.h"
#include "UsagePresentation/MenuBarConfiguration.h"

#include <functional>
#include <gtest/gtest.h>

namespace gaugewell {
namespace {

const std::string codexID = "app.gaugewell.codex.subscription";
const std::string claudeID = "app.gaugewell.claude.subscription";

TEST(MenuBarConfiguration, FollowsTheReadingRules) {
    using S = std::string;
    const struct {
        const char* name;
        std::vector<std::pair<std::string, UserDefaultsValue>> stored;
        // Applied to the configuration of nothing stored to give the expected one.
        std::function<void(MenuBarConfiguration&)> expectedChange;
    } cases[] = {
        {"NothingStored", {}, [](auto&) {}},
        {"CodexHidden", {{"menu.showCodex", false}}, [](auto& c) { c.enabledProviderIDs = {claudeID}; }},
        {"BothHidden",
         {{"menu.showCodex", false}, {"menu.showClaude", false}},
         [](auto& c) { c.enabledProviderIDs.clear(); }},
        // Only a stored Boolean can turn off a setting whose default is on.
        {"ShowClaudeAsStringStaysOn", {{"menu.showClaude", S("false")}}, [](auto&) {}},
        {"PercentageOff", {{"menu.showPercentage", false}}, [](auto& c) { c.showPercentage = false; }},
        {"ResetOff", {{"menu.showReset", false}}, [](auto& c) { c.showResetTime = false; }},
        // The icons-only switch reads leniently.
        {"IconsOnlyYes", {{"menu.iconsOnly", S("yes")}}, [](auto& c) { c.iconsOnly = true; }},
        {"IconsOnlyOtherText", {{"menu.iconsOnly", S("on")}}, [](auto&) {}},
        {"Remaining",
         {{"menu.percentageMode", S("remaining")}},
         [](auto& c) { c.percentageMode = PercentageDisplayMode::remaining; }},
        {"WeeklyWindow",
         {{"menu.windowKind", S("sevenDay")}},
         [](auto& c) { c.selectedWindowKind = UsageWindowKind::sevenDay; }},
        {"UnknownWindowKindFallsBack", {{"menu.windowKind", S("weekly")}}, [](auto&) {}},
        {"Detailed",
         {{"menu.density", S("detailed")}},
         [](auto& c) { c.density = MenuBarDensity::detailed; }},
        {"OrderDropsUnknownAndEmptyPieces",
         {{"menu.providerOrder", S("gemini,,claude,")}},
         [](auto& c) { c.providerOrder = {claudeID}; }},
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
        // Members not named here keep the struct's defaults.
        MenuBarConfiguration expected{.enabledProviderIDs = {codexID, claudeID},
                                      .providerOrder = {codexID, claudeID},
                                      .selectedWindowKind = UsageWindowKind::fiveHour};
        expectedChange(expected);
        EXPECT_EQ(MenuBarConfiguration::fromDefaults(defaults), expected);
    }
}

} // namespace
} // namespace gaugewell
