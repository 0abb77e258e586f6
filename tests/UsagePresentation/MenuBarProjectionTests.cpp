#include "RecordFixtures.h"
#include "UsagePresentation/MenuBarProjection.h"

#include <gtest/gtest.h>

namespace gaugewell {
namespace {

using testing::fixedConnectionID;
using testing::referencePlus;

const std::string codexID = "app.gaugewell.codex.subscription";
const std::string claudeID = "app.gaugewell.claude.subscription";
// What en_US puts between the minutes and the day period.
const std::string narrowSpace = "\u202F";

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

class MenuBarProjectionTest : public ::testing::Test {
protected:
    MenuBarProjection project(const std::vector<ProviderMenuSnapshot>& snapshots,
                              const MenuBarConfiguration& config) const {
        return MenuBarProjection::project(snapshots, config, resetTimes);
    }

    std::vector<std::string> order(const MenuBarProjection& projection) const {
        std::vector<std::string> ids;
        for (const auto& entry : projection.entries) {
            ids.push_back(entry.providerID);
        }
        return ids;
    }

    IcuResetTimeFormatter resetTimes{"en_US", "UTC"};
};

TEST_F(MenuBarProjectionTest, CompactConsumedWithResetTime) {
    const auto projection = project(
        {codex({window("primary", UsageWindowKind::fiveHour, 10, "0.424", resetAt)})}, configuration());
    ASSERT_EQ(projection.entries.size(), 1u);
    EXPECT_EQ(projection.entries[0],
              (MenuBarProjection::Entry{codexID, "Codex", "42% 3:45" + narrowSpace + "PM"}));
    EXPECT_EQ(projection.accessibilityLabel, "Codex, 42% consumed, resets at 3:45" + narrowSpace + "PM");
}

TEST_F(MenuBarProjectionTest, DetailedRemainingWithoutResetTime) {
    auto config = configuration();
    config.percentageMode = PercentageDisplayMode::remaining;
    config.density = MenuBarDensity::detailed;
    config.showResetTime = false;
    const auto projection =
        project({claude({window("five_hour", UsageWindowKind::fiveHour, 10, "0.42", resetAt)})}, config);
    ASSERT_EQ(projection.entries.size(), 1u);
    EXPECT_EQ(projection.entries[0].text, "Claude 58%");
    EXPECT_EQ(projection.accessibilityLabel, "Claude, 58% remaining");
}

TEST_F(MenuBarProjectionTest, ProviderWithoutWindowsShowsTheDash) {
    const auto projection =
        project({codex({window("primary", UsageWindowKind::fiveHour, 10, "0.424", resetAt)}), claude()},
                configuration());
    ASSERT_EQ(projection.entries.size(), 2u);
    EXPECT_EQ(projection.entries[1].text, "\u2014");
    EXPECT_EQ(projection.accessibilityLabel,
              "Codex, 42% consumed, resets at 3:45" + narrowSpace + "PM; Claude, usage unavailable");
}

TEST_F(MenuBarProjectionTest, WindowWithoutUsedFractionShowsTheDashButKeepsItsReset) {
    // A remaining fraction alone is not read as a used share here.
    const auto projection =
        project({codex({window("primary", UsageWindowKind::fiveHour, 10, std::nullopt, resetAt, "0.3")})},
                configuration());
    EXPECT_EQ(projection.entries.at(0).text, "\u2014 3:45" + narrowSpace + "PM");
    EXPECT_EQ(projection.accessibilityLabel, "Codex, usage unavailable, resets at 3:45" + narrowSpace + "PM");
}

TEST_F(MenuBarProjectionTest, NothingVisibleIsUnavailable) {
    auto hidden = configuration();
    hidden.enabledProviderIDs.clear();
    for (const auto& projection : {project({codex(), claude()}, hidden), project({}, configuration())}) {
        EXPECT_TRUE(projection.entries.empty());
        EXPECT_EQ(projection.accessibilityLabel, "Gaugewell unavailable");
    }
}

struct OrderCase {
    std::string name;
    std::vector<std::string> providerOrder;
    std::set<std::string> enabled;
    std::vector<std::string> snapshotIDs;
    std::vector<std::string> expected;
};

class MenuBarProjectionOrder : public MenuBarProjectionTest,
                               public ::testing::WithParamInterface<OrderCase> {};

TEST_P(MenuBarProjectionOrder, FollowsTheEffectiveOrder) {
    std::vector<ProviderMenuSnapshot> snapshots;
    for (const auto& id : GetParam().snapshotIDs) {
        snapshots.push_back({id, id, {}});
    }
    auto config = configuration();
    config.providerOrder = GetParam().providerOrder;
    config.enabledProviderIDs = GetParam().enabled;
    EXPECT_EQ(order(project(snapshots, config)), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, MenuBarProjectionOrder,
    ::testing::Values(
        OrderCase{"StoredOrder",
                  {codexID, claudeID},
                  {codexID, claudeID},
                  {claudeID, codexID},
                  {codexID, claudeID}},
        OrderCase{"MissingIDsAppendedInSnapshotOrder",
                  {claudeID},
                  {codexID, claudeID},
                  {codexID, claudeID},
                  {claudeID, codexID}},
        OrderCase{"EmptyOrderKeepsSnapshotOrder",
                  {},
                  {codexID, claudeID},
                  {claudeID, codexID},
                  {claudeID, codexID}},
        OrderCase{"OrderedIDWithoutSnapshotSkipped",
                  {claudeID, codexID},
                  {codexID, claudeID},
                  {codexID},
                  {codexID}},
        OrderCase{"HiddenProviderLeftOut", {codexID, claudeID}, {claudeID}, {codexID, claudeID}, {claudeID}},
        OrderCase{"UnknownProviderNeedsEnabling", {}, {codexID, claudeID}, {"other", codexID}, {codexID}},
        OrderCase{"RepeatedIDContributesEachTime",
                  {claudeID, codexID, claudeID},
                  {codexID, claudeID},
                  {codexID, claudeID},
                  {claudeID, codexID, claudeID}}),
    [](const auto& info) { return info.param.name; });

struct WindowChoiceCase {
    std::string name;
    std::optional<UsageWindowKind> selected;
    std::vector<UsageWindowSample> windows;
    std::string expectedText;
};

class MenuBarProjectionWindowChoice : public MenuBarProjectionTest,
                                      public ::testing::WithParamInterface<WindowChoiceCase> {};

TEST_P(MenuBarProjectionWindowChoice, ShowsTheChosenWindow) {
    auto config = configuration();
    config.selectedWindowKind = GetParam().selected;
    config.showResetTime = false;
    EXPECT_EQ(project({codex(GetParam().windows)}, config).entries.at(0).text, GetParam().expectedText);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, MenuBarProjectionWindowChoice,
    ::testing::Values(WindowChoiceCase{"FallsBackToAllWindows",
                                       UsageWindowKind::sevenDay,
                                       {window("primary", UsageWindowKind::fiveHour, 10, "0.11")},
                                       "11%"},
                      WindowChoiceCase{"SelectedKindBeatsNewerOtherKind",
                                       UsageWindowKind::sevenDay,
                                       {window("weekly", UsageWindowKind::sevenDay, 10, "0.22"),
                                        window("primary", UsageWindowKind::fiveHour, 20, "0.11")},
                                       "22%"},
                      WindowChoiceCase{"LaterObservationWins",
                                       UsageWindowKind::sevenDay,
                                       {window("a", UsageWindowKind::sevenDay, 10, "0.22"),
                                        window("b", UsageWindowKind::sevenDay, 30, "0.33"),
                                        window("c", UsageWindowKind::sevenDay, 20, "0.44")},
                                       "33%"},
                      WindowChoiceCase{"FirstWinsOnEqualObservation",
                                       UsageWindowKind::sevenDay,
                                       {window("a", UsageWindowKind::sevenDay, 10, "0.22"),
                                        window("b", UsageWindowKind::sevenDay, 10, "0.33")},
                                       "22%"},
                      WindowChoiceCase{"NoSelectionTakesTheLatestOfAnyKind",
                                       std::nullopt,
                                       {window("primary", UsageWindowKind::fiveHour, 10, "0.11"),
                                        window("model", UsageWindowKind::modelSpecific, 20, "0.66")},
                                       "66%"}),
    [](const auto& info) { return info.param.name; });

struct PercentageCase {
    std::string name;
    std::string usedFraction;
    PercentageDisplayMode mode;
    std::string expectedText;
};

class MenuBarProjectionPercentage : public MenuBarProjectionTest,
                                    public ::testing::WithParamInterface<PercentageCase> {};

TEST_P(MenuBarProjectionPercentage, RoundsHalfAwayFromZero) {
    auto config = configuration();
    config.percentageMode = GetParam().mode;
    config.showResetTime = false;
    const auto projection =
        project({codex({window("primary", UsageWindowKind::fiveHour, 10, GetParam().usedFraction)})}, config);
    EXPECT_EQ(projection.entries.at(0).text, GetParam().expectedText);
    const bool known = GetParam().expectedText != "\u2014";
    const std::string spoken =
        known ? ", " + GetParam().expectedText +
                    (GetParam().mode == PercentageDisplayMode::consumed ? " consumed" : " remaining")
              : ", usage unavailable";
    EXPECT_EQ(projection.accessibilityLabel, "Codex" + spoken);
}

constexpr auto consumed = PercentageDisplayMode::consumed;
constexpr auto remaining = PercentageDisplayMode::remaining;

INSTANTIATE_TEST_SUITE_P(
    Cases, MenuBarProjectionPercentage,
    ::testing::Values(PercentageCase{"HalfRoundsUp", "0.005", consumed, "1%"},
                      PercentageCase{"BelowHalfRoundsDown", "0.004", consumed, "0%"},
                      PercentageCase{"NegativeHalfRoundsAway", "-0.005", consumed, "-1%"},
                      PercentageCase{"OverLimitConsumed", "1.25", consumed, "125%"},
                      PercentageCase{"OverLimitRemainingIsZero", "1.25", remaining, "0%"},
                      PercentageCase{"RemainingOfNegativeUse", "-0.5", remaining, "150%"},
                      PercentageCase{"Full", "1", consumed, "100%"},
                      PercentageCase{"NothingRemaining", "1", remaining, "0%"},
                      PercentageCase{"OutOfIntegerRange", "1e30", consumed, "\u2014"},
                      PercentageCase{"FarBelowIntegerRange", "-1e30", consumed, "\u2014"}),
    [](const auto& info) { return info.param.name; });

TEST_F(MenuBarProjectionTest, IconsOnlyEmptiesTextsButNotTheLabel) {
    auto config = configuration();
    config.iconsOnly = true;
    config.density = MenuBarDensity::detailed;
    const auto projection = project(
        {codex({window("primary", UsageWindowKind::fiveHour, 10, "0.424", resetAt)}), claude()}, config);
    ASSERT_EQ(projection.entries.size(), 2u);
    for (const auto& entry : projection.entries) {
        EXPECT_EQ(entry.text, "");
    }
    EXPECT_EQ(projection.accessibilityLabel,
              "Codex, 42% consumed, resets at 3:45" + narrowSpace + "PM; Claude, usage unavailable");
}

TEST_F(MenuBarProjectionTest, PercentageAndResetOffLeaveOnlyTheName) {
    auto config = configuration();
    config.showPercentage = false;
    config.showResetTime = false;
    const std::vector snapshots{codex({window("primary", UsageWindowKind::fiveHour, 10, "0.424", resetAt)})};

    auto projection = project(snapshots, config);
    EXPECT_EQ(projection.entries.at(0).text, "");
    EXPECT_EQ(projection.accessibilityLabel, "Codex");

    config.density = MenuBarDensity::detailed;
    projection = project(snapshots, config);
    EXPECT_EQ(projection.entries.at(0).text, "Codex");
    EXPECT_EQ(projection.accessibilityLabel, "Codex");
}

TEST_F(MenuBarProjectionTest, ResetAloneAndMissingResetTime) {
    auto config = configuration();
    config.showPercentage = false;
    const auto projection =
        project({codex({window("primary", UsageWindowKind::fiveHour, 10, "0.4", resetAt)}),
                 claude({window("five_hour", UsageWindowKind::fiveHour, 10, "0.4")})},
                config);
    EXPECT_EQ(projection.entries.at(0).text, "3:45" + narrowSpace + "PM");
    EXPECT_EQ(projection.entries.at(1).text, "");
    EXPECT_EQ(projection.accessibilityLabel, "Codex, resets at 3:45" + narrowSpace + "PM; Claude");
}

TEST_F(MenuBarProjectionTest, ResetTimeFollowsTheInjectedStyle) {
    const IcuResetTimeFormatter german("de_DE", "Europe/Berlin");
    const auto projection = MenuBarProjection::project(
        {codex({window("primary", UsageWindowKind::fiveHour, 10, "0.424", resetAt)})}, configuration(),
        german);
    EXPECT_EQ(projection.entries.at(0).text, "42% 16:45");
}

} // namespace
} // namespace gaugewell
