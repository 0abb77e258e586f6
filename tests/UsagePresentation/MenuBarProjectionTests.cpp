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

TEST(MenuBarProjectionTest, CompactConsumedWithResetTime) {
    const auto projection = project({codex({session("0.424", resetAt)})}, configuration());
    ASSERT_EQ(projection.entries.size(), 1u);
    EXPECT_EQ(projection.entries[0], (MenuBarProjection::Entry{codexID, "Codex", "42% " + resetText}));
    EXPECT_EQ(projection.accessibilityLabel, "Codex, 42% consumed, resets at " + resetText);
}

TEST(MenuBarProjectionTest, TextsAndLabelFollowTheSwitches) {
    using Config = MenuBarConfiguration;
    const auto detailed = [](Config& c) { c.density = MenuBarDensity::detailed; };
    const auto noPercentageNorReset = [](Config& c) { c.showPercentage = c.showResetTime = false; };
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
        {"ProviderWithoutWindowsShowsTheDash",
         [](Config&) {},
         {codex({session("0.424", resetAt)}), claude()},
         {"42% " + resetText, dash},
         "Codex, 42% consumed, resets at " + resetText + "; Claude, usage unavailable"},
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
        {"PercentageAndResetOffLeaveNothingInCompact",
         noPercentageNorReset,
         {codex({session("0.424", resetAt)})},
         {""},
         "Codex"},
        {"PercentageAndResetOffLeaveTheNameInDetailed",
         [&](Config& c) {
             detailed(c);
             noPercentageNorReset(c);
         },
         {codex({session("0.424", resetAt)})},
         {"Codex"},
         "Codex"},
        {"ResetAloneAndMissingResetTime",
         [](Config& c) { c.showPercentage = false; },
         {codex({session("0.4", resetAt)}),
          claude({window("five_hour", UsageWindowKind::fiveHour, 10, "0.4")})},
         {resetText, ""},
         "Codex, resets at " + resetText + "; Claude"},
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
        {"EmptyOrderKeepsSnapshotOrder", {}, {co, cl}, {cl, co}, {cl, co}},
        {"OrderedIDWithoutSnapshotSkipped", {cl, co}, {co, cl}, {co}, {co}},
        {"HiddenProviderLeftOut", {co, cl}, {cl}, {co, cl}, {cl}},
        {"UnknownProviderNeedsEnabling", {}, {co, cl}, {"other", co}, {co}},
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

TEST(MenuBarProjectionTest, ShowsTheSelectedKindsLatestWindowFirstOnATie) {
    const auto weekly = [](const char* bucket, double observedAt, const char* used) {
        return window(bucket, UsageWindowKind::sevenDay, observedAt, used);
    };
    const struct {
        const char* name;
        std::optional<UsageWindowKind> selected;
        std::vector<UsageWindowSample> windows;
        std::string expectedText;
    } cases[] = {
        {"FallsBackToAllWindows", UsageWindowKind::sevenDay, {session("0.11")}, "11%"},
        {"SelectedKindBeatsNewerOtherKind",
         UsageWindowKind::sevenDay,
         {weekly("weekly", 10, "0.22"), window("primary", UsageWindowKind::fiveHour, 20, "0.11")},
         "22%"},
        {"LaterObservationWins",
         UsageWindowKind::sevenDay,
         {weekly("a", 10, "0.22"), weekly("b", 30, "0.33"), weekly("c", 20, "0.44")},
         "33%"},
        {"FirstWinsOnEqualObservation",
         UsageWindowKind::sevenDay,
         {weekly("a", 10, "0.22"), weekly("b", 10, "0.33")},
         "22%"},
        {"NoSelectionTakesTheLatestOfAnyKind",
         std::nullopt,
         {session("0.11"), window("model", UsageWindowKind::modelSpecific, 20, "0.66")},
         "66%"},
    };
    for (const auto& [name, selected, windows, expectedText] : cases) {
        SCOPED_TRACE(name);
        auto config = configuration();
        config.selectedWindowKind = selected;
        config.showResetTime = false;
        EXPECT_EQ(project({codex(windows)}, config).entries.at(0).text, expectedText);
    }
}

TEST(MenuBarProjectionTest, PercentagesRoundHalfAwayFromZero) {
    constexpr auto consumed = PercentageDisplayMode::consumed;
    constexpr auto remaining = PercentageDisplayMode::remaining;
    const struct {
        std::string usedFraction;
        PercentageDisplayMode mode;
        std::string expectedText;
    } cases[] = {
        {"0.005", consumed, "1%"},   {"0.004", consumed, "0%"},
        {"-0.005", consumed, "-1%"}, {"1.25", consumed, "125%"},
        {"1.25", remaining, "0%"},   {"-0.5", remaining, "150%"},
        {"1", consumed, "100%"},     {"1", remaining, "0%"},
        {"1e30", consumed, dash}, // beyond the integer range
        {"-1e30", consumed, dash},
    };
    for (const auto& [usedFraction, mode, expectedText] : cases) {
        SCOPED_TRACE(usedFraction + (mode == consumed ? " consumed" : " remaining"));
        auto config = configuration();
        config.percentageMode = mode;
        config.showResetTime = false;
        const auto projection = project({codex({session(usedFraction)})}, config);
        EXPECT_EQ(projection.entries.at(0).text, expectedText);
        const std::string spoken = expectedText == dash ? "usage unavailable"
                                   : mode == consumed   ? expectedText + " consumed"
                                                        : expectedText + " remaining";
        EXPECT_EQ(projection.accessibilityLabel, "Codex, " + spoken);
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
