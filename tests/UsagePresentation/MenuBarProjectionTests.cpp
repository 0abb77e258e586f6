#include "RecordFixtures.h"
#include "UsagePresentation/MenuBarProjection.h"

#include <functional>
#include <gtest/gtest.h>

namespace gaugewell {
namespace {

using testing::fixedConnectionID;
using testing::referencePlus;

const std::string codexID = "app.gaugewell.codex.subscription";
const std::string claudeID = "app.gaugewell.claude.subscription";
// en_US puts a narrow no-break space between the minutes and the day period.
const std::string resetText = "3:45\u202FPM";
const std::string dash = "\u2014";

// 2026-01-01 15:45 UTC
const Date resetAt = dateFromUnixSeconds(1'767'282'300);

UsageWindowSample window(std::string bucket, UsageWindowKind kind, double observedAt,
                         std::optional<std::string> used, std::optional<Date> reset = std::nullopt,
                         std::optional<std::string> remaining = std::nullopt) {
    return UsageWindowSample("codex:" + bucket, fixedConnectionID(), bucket, std::nullopt, kind, std::nullopt,
                             referencePlus(observedAt), std::nullopt, std::nullopt, std::nullopt,
                             std::nullopt, reset, used ? Decimal::parse(*used) : std::nullopt,
                             remaining ? Decimal::parse(*remaining) : std::nullopt, std::nullopt,
                             std::nullopt, std::nullopt, MeasurementAuthority::vendorAuthoritative,
                             MeasurementConfidence::exact, MeasurementCoverage::account,
                             MeasurementFreshness::live, testing::testSource(), std::nullopt);
}

// A five-hour window observed at 10.
UsageWindowSample session(std::optional<std::string> used, std::optional<Date> reset = std::nullopt) {
    return window("primary", UsageWindowKind::fiveHour, 10, std::move(used), reset);
}

ProviderMenuSnapshot codex(std::vector<UsageWindowSample> windows = {}) {
    return {codexID, "Codex", std::move(windows)};
}

ProviderMenuSnapshot claude(std::vector<UsageWindowSample> windows = {}) {
    return {claudeID, "Claude", std::move(windows)};
}

MenuBarConfiguration configuration() {
    return MenuBarConfiguration{.enabledProviderIDs = {codexID, claudeID},
                                .providerOrder = {codexID, claudeID},
                                .selectedWindowKind = UsageWindowKind::fiveHour};
}

MenuBarProjection project(const std::vector<ProviderMenuSnapshot>& snapshots,
                          const MenuBarConfiguration& config) {
    static const IcuResetTimeFormatter resetTimes("en_US", "UTC");
    return MenuBarProjection::project(snapshots, config, resetTimes);
}

// The newer weekly window is passed over for the selected five-hour one.
TEST(MenuBarProjectionTest, CompactConsumedWithResetTime) {
    const auto projection =
        project({codex({session("0.424", resetAt), window("weekly", UsageWindowKind::sevenDay, 20, "0.9")})},
                configuration());
    ASSERT_EQ(projection.entries.size(), 1u);
    EXPECT_EQ(projection.entries[0], (MenuBarProjection::Entry{codexID, "Codex", "42% " + resetText}));
    EXPECT_EQ(projection.accessibilityLabel, "Codex, 42% consumed, resets at " + resetText);
}

TEST(MenuBarProjectionTest, TextsAndLabelFollowTheSwitches) {
    using Config = MenuBarConfiguration;
    const auto detailed = [](Config& c) { c.density = MenuBarDensity::detailed; };
    const struct {
        const char* name;
        std::function<void(Config&)> change;
        std::vector<ProviderMenuSnapshot> snapshots;
        std::vector<std::string> texts;
        std::string label;
    } cases[] = {
        {"DetailedRemainingWithoutResetTime",
         [&](Config& c) {
             detailed(c);
             c.percentageMode = PercentageDisplayMode::remaining;
             c.showResetTime = false;
         },
         {claude({window("five_hour", UsageWindowKind::fiveHour, 10, "0.42", resetAt)})},
         {"Claude 58%"},
         "Claude, 58% remaining"},
        // A remaining fraction alone is not read as a used share here.
        {"WindowWithoutUsedFractionShowsTheDashButKeepsItsReset",
         [](Config&) {},
         {codex({window("primary", UsageWindowKind::fiveHour, 10, std::nullopt, resetAt, "0.3")})},
         {dash + " " + resetText},
         "Codex, usage unavailable, resets at " + resetText},
        {"IconsOnlyEmptiesTextsButNotTheLabel",
         [&](Config& c) {
             detailed(c);
             c.iconsOnly = true;
         },
         {codex({session("0.424", resetAt)}), claude()},
         {"", ""},
         "Codex, 42% consumed, resets at " + resetText + "; Claude, usage unavailable"},
        {"ResetAloneAndMissingResetTime",
         [](Config& c) { c.showPercentage = false; },
         {codex({session("0.4", resetAt)}),
          claude({window("five_hour", UsageWindowKind::fiveHour, 10, "0.4")})},
         {resetText, ""},
         "Codex, resets at " + resetText + "; Claude"},
        // The rounding itself is displayedPercentage's.
        {"RemainingNeverBelowZero",
         [](Config& c) { c.percentageMode = PercentageDisplayMode::remaining; },
         {codex({session("1.25")})},
         {"0%"},
         "Codex, 0% remaining"},
        {"PercentageBeyondTheIntegerRangeShowsTheDash",
         [](Config&) {},
         {codex({session("1e30")})},
         {dash},
         "Codex, usage unavailable"},
    };
    for (const auto& [name, change, snapshots, texts, label] : cases) {
        SCOPED_TRACE(name);
        auto config = configuration();
        change(config);
        const auto projection = project(snapshots, config);
        std::vector<std::string> actualTexts;
        for (const auto& entry : projection.entries) {
            actualTexts.push_back(entry.text);
        }
        EXPECT_EQ(actualTexts, texts);
        EXPECT_EQ(projection.accessibilityLabel, label);
    }
}

TEST(MenuBarProjectionTest, NothingVisibleIsUnavailable) {
    auto hidden = configuration();
    hidden.enabledProviderIDs.clear();
    for (const auto& projection : {project({codex(), claude()}, hidden), project({}, configuration())}) {
        EXPECT_TRUE(projection.entries.empty());
        EXPECT_EQ(projection.accessibilityLabel, "Gaugewell unavailable");
    }
}

TEST(MenuBarProjectionTest, EntriesFollowTheEffectiveOrder) {
    const auto& co = codexID;
    const auto& cl = claudeID;
    const struct {
        const char* name;
        std::vector<std::string> providerOrder;
        std::set<std::string> enabled;
        std::vector<std::string> snapshotIDs;
        std::vector<std::string> expected;
    } cases[] = {
        {"StoredOrder", {co, cl}, {co, cl}, {cl, co}, {co, cl}},
        {"MissingIDsAppendedInSnapshotOrder", {cl}, {co, cl}, {co, cl}, {cl, co}},
        {"OrderedIDWithoutSnapshotSkipped", {cl, co}, {co, cl}, {co}, {co}},
        {"HiddenProviderLeftOut", {co, cl}, {cl}, {co, cl}, {cl}},
        {"RepeatedIDContributesEachTime", {cl, co, cl}, {co, cl}, {co, cl}, {cl, co, cl}},
    };
    for (const auto& [name, providerOrder, enabled, snapshotIDs, expected] : cases) {
        SCOPED_TRACE(name);
        std::vector<ProviderMenuSnapshot> snapshots;
        for (const auto& id : snapshotIDs) {
            snapshots.push_back({id, id, {}});
        }
        auto config = configuration();
        config.providerOrder = providerOrder;
        config.enabledProviderIDs = enabled;
        std::vector<std::string> ids;
        for (const auto& entry : project(snapshots, config).entries) {
            ids.push_back(entry.providerID);
        }
        EXPECT_EQ(ids, expected);
    }
}

TEST(MenuBarWindowTest, TheSelectedKindsLatestWindowFirstOnATie) {
    using enum UsageWindowKind;
    const auto at = [](UsageWindowKind kind, double observedAt) {
        return window("b", kind, observedAt, "0.1");
    };
    const struct {
        const char* name;
        std::optional<UsageWindowKind> selected;
        std::vector<UsageWindowSample> windows;
        std::size_t expected; // index into windows
    } cases[] = {
        {"FallsBackToAllWindows", sevenDay, {at(fiveHour, 10)}, 0},
        {"SelectedKindBeatsNewerOtherKind", sevenDay, {at(sevenDay, 10), at(fiveHour, 20)}, 0},
        {"LaterObservationWins", sevenDay, {at(sevenDay, 10), at(sevenDay, 30), at(sevenDay, 20)}, 1},
        {"FirstWinsOnEqualObservation", sevenDay, {at(sevenDay, 10), at(sevenDay, 10)}, 0},
        {"NoSelectionTakesTheLatestOfAnyKind", std::nullopt, {at(fiveHour, 10), at(modelSpecific, 20)}, 1},
    };
    for (const auto& [name, selected, windows, expected] : cases) {
        EXPECT_EQ(menuBarWindow(windows, selected), &windows[expected]) << name;
    }
}

TEST(MenuBarProjectionTest, ResetTimeFollowsTheInjectedStyle) {
    const IcuResetTimeFormatter german("de_DE", "Europe/Berlin");
    const auto projection =
        MenuBarProjection::project({codex({session("0.424", resetAt)})}, configuration(), german);
    EXPECT_EQ(projection.entries.at(0).text, "42% 16:45");
}

} // namespace
} // namespace gaugewell
