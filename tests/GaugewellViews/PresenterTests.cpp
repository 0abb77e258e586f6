#include "GaugewellUI/Views/Connections/ConnectionPresenter.h"
#include "GaugewellUI/Views/Dashboard/DashboardPresenter.h"
#include "GaugewellUI/Views/Onboarding/OnboardingView.h"
#include "GaugewellUI/Views/Settings/SettingsPresenter.h"
#include "GaugewellUI/Views/Tray/PopoverPresenter.h"
#include "GaugewellUI/Views/Tray/PopupPlacement.h"
#include "UsagePresentation/RelativeTimeFormatter.h"
#include "ViewTestSupport.h"

#include <gmock/gmock.h>

namespace gaugewell {
namespace {

using ::testing::ElementsAre;
using ::testing::Field;
using testing::viewState;
using testing::windowSample;

class PresenterTest : public ::testing::Test {
protected:
    void SetUp() override { testing::widgetApplication(); }
    RelativeTimeFormatter relative{"en_US", "UTC"};
    Date now = testing::referencePlus(10'000);
};

ProviderViewState signedOut(ProviderService service) {
    auto state = viewState(service, {});
    state.availability = ProviderAvailability::authenticationRequired;
    return state;
}

TEST_F(PresenterTest, PopoverShowsTheShownProvidersAndWhyOneHasNoWindows) {
    auto failing = viewState(ProviderService::codex, {});
    failing.availability = ProviderAvailability::temporarilyUnavailable;
    const std::vector<ProviderViewState> providers{
        failing,
        viewState(ProviderService::claude, {windowSample({.used = "0.415", .resetAt = 10'000 + 7200})})};

    const auto both =
        presentPopover({providers, false, now - std::chrono::minutes(2), true, true}, now, relative);
    EXPECT_EQ(both.statusLine, "Updated 2 min. ago");
    ASSERT_EQ(both.cards.size(), 2u);
    EXPECT_EQ(both.cards[0].unavailableMessage, "Usage is not available yet.");
    EXPECT_FALSE(both.cards[0].offersConnect);
    ASSERT_EQ(both.cards[1].rows.size(), 1u);
    EXPECT_EQ(both.cards[1].rows[0].usedText, "42% used");
    EXPECT_EQ(both.cards[1].rows[0].remainingText, "59%"); // 58.5 rounds away from zero
    EXPECT_EQ(both.cards[1].rows[0].resetText, "Resets in 2 hr.");

    const auto claudeHidden =
        presentPopover({{signedOut(ProviderService::codex)}, true, std::nullopt, true, false}, now, relative);
    EXPECT_EQ(claudeHidden.statusLine, "Refreshing…");
    ASSERT_EQ(claudeHidden.cards.size(), 1u);
    EXPECT_EQ(claudeHidden.cards[0].unavailableMessage, "Sign in to access this account's usage.");
    EXPECT_TRUE(claudeHidden.cards[0].offersConnect);
    EXPECT_FALSE(claudeHidden.showsEmptyState);
    auto missingTool = signedOut(ProviderService::codex);
    missingTool.availability = ProviderAvailability::notInstalled;
    EXPECT_EQ(unavailableMessage(missingTool),
              "The Codex command-line tool was not found. Install it, then connect.");

    const auto none = presentPopover({providers, false, std::nullopt, false, false}, now, relative);
    EXPECT_EQ(none.statusLine, "Awaiting data");
    EXPECT_TRUE(none.cards.empty());
    EXPECT_TRUE(none.showsEmptyState);
}

TEST_F(PresenterTest, ConnectButtonFollowsTheStateAndTheActionRunning) {
    using S = ProviderConnectionStatus;
    const auto control = [](ProviderService service, S status,
                            std::optional<ProviderService> running = std::nullopt) {
        return connectionControl({service, status, std::nullopt}, running);
    };
    EXPECT_EQ(control(ProviderService::codex, S::signedOut).title, "Connect");
    EXPECT_EQ(control(ProviderService::claude, S::signedIn).title, "Disconnect");
    EXPECT_EQ(control(ProviderService::claude, S::signedIn).help,
              "Revokes this app's Claude tokens and removes them from your keyring.");
    EXPECT_EQ(control(ProviderService::codex, S::notInstalled).action, ConnectionAction::openInstallGuide);
    EXPECT_EQ(control(ProviderService::codex, S::notInstalled).help,
              "Open the official Codex CLI installation guide");
    // One sign-in at a time: its own button cancels it, the other service's waits.
    EXPECT_EQ(control(ProviderService::claude, S::connecting, ProviderService::claude).action,
              ConnectionAction::cancelSignIn);
    EXPECT_FALSE(control(ProviderService::codex, S::signedOut, ProviderService::claude).enabled);
    EXPECT_FALSE(control(ProviderService::codex, S::checking).enabled);
}

TEST_F(PresenterTest, DashboardKeepsTheNewestSampleOfABucketInCardsAndTable) {
    const std::vector<ProviderViewState> providers{viewState(
        ProviderService::codex,
        {windowSample({.bucket = "primary", .used = "0.2", .observedAt = 100}),
         windowSample({.bucket = "primary", .used = "0.95", .observedAt = 200}),
         windowSample(
             {.bucket = "weekly", .kind = UsageWindowKind::sevenDay, .used = "0.3", .observedAt = 150})})};
    const auto content = presentDashboard(providers, {}, false, std::nullopt, now, relative);
    ASSERT_EQ(content.cards.size(), 1u);
    EXPECT_EQ(content.cards[0].rows.size(), 2u);
    // The ring shows the window closest to its limit.
    ASSERT_TRUE(content.cards[0].ring);
    EXPECT_EQ(content.cards[0].ring->percent, 95);
    EXPECT_EQ(content.cards[0].ring->caption, "Session");
    EXPECT_THAT(content.table, ElementsAre(Field(&WindowTableRow::consumed, "95%"),
                                           Field(&WindowTableRow::consumed, "30%")));
    EXPECT_TRUE(content.table[0].warning);
    EXPECT_FALSE(content.table[1].warning);
    EXPECT_EQ(content.table[0].remaining, "5%");
    EXPECT_EQ(content.table[0].window, "Session");
}

TEST_F(PresenterTest, DashboardWithoutProvidersOrHistoryIsEmpty) {
    const auto content = presentDashboard({}, {}, false, std::nullopt, now, relative);
    EXPECT_EQ(content.statusLine, "Awaiting data");
    EXPECT_TRUE(content.cards.empty());
    EXPECT_TRUE(content.chart.isEmpty());
    EXPECT_TRUE(content.table.empty());
}

TEST_F(PresenterTest, ChartHasABarPerDayAndProviderWithZeroWhereOneReportedNothing) {
    const auto day = [](int index) { return testing::referencePlus(86400.0 * index); };
    const std::vector<HistoryPoint> history{
        {"a", ProviderService::codex, "Codex", day(1), 1200},
        {"b", ProviderService::claude, "Claude", day(1), 300},
        {"c", ProviderService::codex, "Codex", day(3), 5'000'000},
    };
    const auto chart = presentDashboard({}, history, false, std::nullopt, now, relative).chart;
    ASSERT_EQ(chart.days.size(), 2u);
    EXPECT_EQ(chart.days[0], QDate(2001, 1, 2));
    ASSERT_EQ(chart.series.size(), 2u);
    EXPECT_EQ(chart.series[0].first, ProviderService::codex);
    EXPECT_THAT(chart.series[0].second, ElementsAre(1200, 5'000'000));
    EXPECT_THAT(chart.series[1].second, ElementsAre(300, 0));
    EXPECT_EQ(chart.largest, 5'000'000);
    EXPECT_EQ(shortTokens(1'234'567), "1.2M");
    EXPECT_EQ(shortTokens(350'000), "350K");
    EXPECT_EQ(shortTokens(980), "980");
    EXPECT_EQ(groupedTokens(1'234'567), "1,234,567");
}

TEST_F(PresenterTest, SettingsDecisions) {
    using SettingsPresenter::providerOrderChoice;
    using SettingsPresenter::reversedProviderOrder;
    EXPECT_EQ(providerOrderChoice(std::nullopt), 0);
    EXPECT_EQ(providerOrderChoice("claude,codex"), 1);
    EXPECT_EQ(providerOrderChoice("claude"), std::nullopt);
    EXPECT_EQ(reversedProviderOrder(std::nullopt), "claude,codex");
    EXPECT_EQ(reversedProviderOrder("claude"), "codex,claude");
    EXPECT_EQ(reversedProviderOrder("claude,codex"), "codex,claude");

    const auto active = *settingDefinition(settingsKey::refreshActiveSeconds);
    const auto idle = *settingDefinition(settingsKey::refreshIdleSeconds);
    EXPECT_EQ(SettingsPresenter::stepperMinutes(active, 120), 2);
    EXPECT_EQ(SettingsPresenter::stepperMinutes(active, 30), 2);
    EXPECT_EQ(SettingsPresenter::stepperMinutes(active, 0), 2);
    EXPECT_EQ(SettingsPresenter::stepperMinutes(active, 5000), 15);
    EXPECT_EQ(SettingsPresenter::stepperMinutes(idle, 3600), 60);
    EXPECT_EQ(SettingsPresenter::stepperMinutes(idle, 0), 10);
    EXPECT_EQ(SettingsPresenter::stepperMinutes(idle, 419), 6);

    EXPECT_EQ(SettingsPresenter::permissionNote(UsageNotificationPermission::notRequested),
              "Permission will be requested when enabled");
    EXPECT_EQ(SettingsPresenter::permissionNote(UsageNotificationPermission::denied),
              "Notifications are turned off on this desktop");

    EXPECT_EQ(onboardingStatusLine(0), "You can finish without connecting");
    EXPECT_EQ(onboardingStatusLine(1), "1 account connected");
    EXPECT_EQ(onboardingStatusLine(2), "Both accounts connected");
}

TEST(PopupPlacement, AnchorsAtTheIconAndStaysOnScreen) {
    const QRect screen(0, 0, 1280, 800);
    const QSize popup(360, 560);
    const QPoint cursor(640, 400);
    // Top panel, icon at the right edge: below the icon, pushed left to fit.
    EXPECT_EQ(popupPosition(QRect(1250, 2, 24, 24), cursor, popup, screen), QPoint(920, 29));
    // Bottom panel: above the icon.
    EXPECT_EQ(popupPosition(QRect(600, 774, 24, 24), cursor, popup, screen), QPoint(431, 210));
    // Left side panel: beside the icon.
    EXPECT_EQ(popupPosition(QRect(2, 300, 24, 24), cursor, popup, screen), QPoint(29, 31));
    // No geometry from the tray: at the cursor, clamped to the screen.
    EXPECT_EQ(popupPosition(QRect(), QPoint(1270, 790), popup, screen), QPoint(920, 226));
    // A screen smaller than the popup keeps its top-left corner visible.
    EXPECT_EQ(popupPosition(QRect(), QPoint(10, 10), popup, QRect(100, 100, 200, 200)), QPoint(100, 100));
}

} // namespace
} // namespace gaugewell
