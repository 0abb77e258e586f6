#include "GaugewellUI/Desktop/LoginItemController.h"
#include "GaugewellUI/Notifications/UsageNotificationController.h"
#include "GaugewellUI/Views/Dashboard/DashboardView.h"
#include "GaugewellUI/Views/Dashboard/WindowsTable.h"
#include "GaugewellUI/Views/Onboarding/OnboardingWindowController.h"
#include "GaugewellUI/Views/Settings/GeneralSettingsView.h"
#include "GaugewellUI/Views/Settings/UsageSettingsView.h"
#include "GaugewellUI/Views/Tray/MenuBarController.h"
#include "GaugewellUI/Views/Tray/PopupWindow.h"
#include "TemporaryDirectory.h"
#include "ViewTestSupport.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <fstream>

namespace gaugewell {
namespace {

using testing::windowSample;

// Renders reset times as the offset from the reference date, so texts do not depend on the clock.
class FixedResetTime : public ResetTimeFormatter {
public:
    std::string format(Date) const override { return "3:45 PM"; }
};

class WindowTest : public ::testing::Test, protected testing::ModelFixture {
protected:
    template <class T> T* find(QWidget& root, const char* name) {
        auto* found = root.findChild<T*>(QString::fromUtf8(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
};

TEST_F(WindowTest, TrayIconIsRedrawnOnlyWhenTheProjectionChanges) {
    codex->set({windowSample({.used = "0.42", .observedAt = 4000, .resetAt = 9000})});
    claude->set({windowSample({.used = "0.10", .observedAt = 4000})});
    MenuBarController controller(*model, defaults,
                                 {std::make_shared<FixedResetTime>(), [this] { return now; }, [] {}, {}});
    EXPECT_EQ(controller.redrawCount(), 1); // the first render always draws
    EXPECT_EQ(controller.accessibleName(), "Gaugewell unavailable");

    refresh();
    ASSERT_TRUE(QTest::qWaitFor([&] { return controller.redrawCount() == 2; }, 5000));
    EXPECT_EQ(controller.accessibleName(), "Codex, 42% consumed, resets at 3:45 PM; Claude, 10% consumed");
    EXPECT_EQ(controller.statusItem().toolTip(), "Codex 42% 3:45 PM\nClaude 10%");

    refresh(); // same numbers: nothing to redraw
    controller.render();
    EXPECT_EQ(controller.redrawCount(), 2);

    // A settings change redraws without a refresh.
    defaults->set(settingsKey::percentageMode, std::string("remaining"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return controller.redrawCount() == 3; }, 5000));
    EXPECT_EQ(controller.statusItem().toolTip(), "Codex 58% 3:45 PM\nClaude 90%");

    defaults->set(settingsKey::showCodex, false);
    defaults->set(settingsKey::showClaude, false);
    ASSERT_TRUE(
        QTest::qWaitFor([&] { return controller.accessibleName() == "Gaugewell unavailable"; }, 5000));
}

TEST_F(WindowTest, PopupTogglesAndMakesTheModelInteractive) {
    MenuBarController controller(*model, defaults,
                                 {std::make_shared<FixedResetTime>(), [this] { return now; }, [] {}, {}});
    controller.togglePopover();
    EXPECT_TRUE(controller.isPopoverShown());
    EXPECT_TRUE(model->isInteractive());
    EXPECT_EQ(controller.popover().size(), PopupWindow::popupSize);
    controller.togglePopover();
    EXPECT_FALSE(controller.isPopoverShown());
    EXPECT_FALSE(model->isInteractive());
}

TEST_F(WindowTest, SettingsControlsWriteTheirKeysAndShowTheirDefaults) {
    testing::TemporaryDirectory autostart;
    LoginItemController loginItem(QStringLiteral("/usr/bin/gaugewell"), autostart.path());
    UsageNotificationController notifications(nullptr, defaults);
    UsageSettingsView settings({*model, notifications, defaults, std::make_shared<FixedResetTime>(),
                                loginItem, [](QWidget*, const QString&) { return QString(); }},
                               SettingsDestination::accounts);
    settings.show();

    const struct {
        const char* control;
        std::string_view key;
        bool byDefault;
    } toggles[] = {
        {"show-codex", settingsKey::showCodex, true},
        {"show-claude", settingsKey::showClaude, true},
        {"icons-only", settingsKey::iconsOnly, false},
        {"show-percentage", settingsKey::showPercentage, true},
        {"show-reset", settingsKey::showReset, true},
        {"usage-alerts", settingsKey::notificationsEnabled, false},
        {"threshold-50", settingsKey::threshold50, true},
        {"threshold-75", settingsKey::threshold75, true},
        {"threshold-90", settingsKey::threshold90, true},
        {"threshold-95", settingsKey::threshold95, true},
        {"window-resets", settingsKey::windowReset, false},
    };
    for (const auto& toggle : toggles) {
        auto* box = find<QAbstractButton>(settings, toggle.control);
        ASSERT_NE(box, nullptr);
        EXPECT_EQ(box->isChecked(), toggle.byDefault) << toggle.control;
        box->click();
        EXPECT_EQ(defaults->storedBool(toggle.key), !toggle.byDefault) << toggle.control;
        EXPECT_FALSE(box->accessibleName().isEmpty()) << toggle.control;
    }

    const struct {
        const char* control;
        std::string_view key;
        const char* byDefault;
        const char* other;
    } pickers[] = {
        {"provider-order", settingsKey::providerOrder, "codex,claude", "claude,codex"},
        {"percentage-mode", settingsKey::percentageMode, "consumed", "remaining"},
        {"density", settingsKey::density, "compact", "detailed"},
        {"usage-window", settingsKey::windowKind, "fiveHour", "unknown"},
    };
    for (const auto& picker : pickers) {
        auto* combo = find<QComboBox>(settings, picker.control);
        ASSERT_NE(combo, nullptr);
        EXPECT_EQ(combo->currentData().toString(), picker.byDefault) << picker.control;
        const int other = combo->findData(QString::fromUtf8(picker.other));
        combo->setCurrentIndex(other);
        emit combo->activated(other);
        EXPECT_EQ(defaults->stringValue(picker.key), picker.other) << picker.control;
    }

    // A stored order the picker does not offer selects nothing; "Reverse" then stores the default.
    defaults->set(settingsKey::providerOrder, std::string("claude"));
    auto* order = find<QComboBox>(settings, "provider-order");
    ASSERT_TRUE(QTest::qWaitFor([&] { return order->currentIndex() == -1; }, 2000));
    find<QPushButton>(settings, "reverse-order")->click();
    EXPECT_EQ(defaults->stringValue(settingsKey::providerOrder), "codex,claude");

    auto* active = find<QSpinBox>(settings, "refresh-active");
    auto* idle = find<QSpinBox>(settings, "refresh-idle");
    EXPECT_EQ(active->value(), 2);
    EXPECT_EQ(idle->value(), 10);
    EXPECT_EQ(active->text(), "While viewing: 2 min");
    idle->setValue(100); // beyond the range: clamped by the stepper
    EXPECT_EQ(defaults->doubleValue(settingsKey::refreshIdleSeconds), 3600);

    EXPECT_EQ(find<QLabel>(settings, "permission-note")->text(), "Unavailable in this build");
}

TEST_F(WindowTest, ExportWritesTheReportOrSaysItCouldNot) {
    testing::TemporaryDirectory folder;
    LoginItemController loginItem(QStringLiteral("/usr/bin/gaugewell"), folder.path());
    UsageNotificationController notifications(nullptr, defaults);
    QString answer;
    QString proposed;
    GeneralSettingsView general(*model, notifications, defaults, loginItem,
                                [&](QWidget*, const QString& name) {
                                    proposed = name;
                                    return answer;
                                });
    general.exportDiagnostics(); // cancelled
    EXPECT_EQ(proposed, "Gaugewell-Diagnostics.txt");
    EXPECT_EQ(general.exportStatus(), std::nullopt);

    answer = QString::fromStdString((folder.path() / "report.txt").string());
    general.exportDiagnostics();
    EXPECT_EQ(general.exportStatus(), "Diagnostics exported.");
    std::ifstream written(folder.path() / "report.txt");
    std::string first;
    std::getline(written, first);
    EXPECT_EQ(first, "Gaugewell diagnostics");

    answer = QString::fromStdString((folder.path() / "missing" / "report.txt").string());
    general.exportDiagnostics();
    EXPECT_EQ(general.exportStatus(), "Diagnostics could not be exported.");
}

TEST_F(WindowTest, OnboardingIsFinishedOnlyByItsButtons) {
    OnboardingWindowController onboarding(*model, defaults);
    onboarding.showIfNeeded();
    ASSERT_NE(onboarding.window(), nullptr);
    EXPECT_EQ(onboarding.window()->windowTitle(), "Welcome to Gaugewell");
    onboarding.window()->close();
    EXPECT_FALSE(onboarding.isCompleted());

    onboarding.showIfNeeded();
    EXPECT_TRUE(onboarding.window()->isVisible());
    find<QPushButton>(*onboarding.window(), "continue")->click();
    authentication->set(ProviderService::claude, ProviderConnectionStatus::signedOut,
                        "Claude sign-in required");
    refresh();
    EXPECT_EQ(find<QLabel>(*onboarding.window(), "onboarding-status")->text(), "1 account connected");
    find<QPushButton>(*onboarding.window(), "finish")->click();
    EXPECT_TRUE(onboarding.isCompleted());
    EXPECT_FALSE(onboarding.window()->isVisible());

    OnboardingWindowController nextLaunch(*model, defaults);
    nextLaunch.showIfNeeded();
    EXPECT_EQ(nextLaunch.window(), nullptr);

    defaults->remove(settingsKey::onboardingCompleted);
    OnboardingWindowController skipped(*model, defaults);
    skipped.showIfNeeded();
    find<QPushButton>(*skipped.window(), "not-now")->click();
    EXPECT_TRUE(skipped.isCompleted());
}

TEST_F(WindowTest, DashboardFollowsTheModel) {
    DashboardView dashboard(
        *model, [] {}, [this] { return now; });
    dashboard.show();
    auto* table = find<WindowsTable>(dashboard, "all-windows");
    EXPECT_EQ(table->rowCount(), 0);
    EXPECT_NE(find<QWidget>(dashboard, "token-chart-empty"), nullptr);
    codex->set({windowSample({.used = "0.42"}),
                windowSample({.bucket = "weekly", .kind = UsageWindowKind::sevenDay})});
    refresh();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !model->isRefreshing(); }, 5000)); // the one showing it started
    EXPECT_EQ(table->rowCount(), 2);
    EXPECT_EQ(table->item(1, 1)->text(), "Weekly");
    EXPECT_EQ(table->item(1, 2)->text(), "\u2014");
    EXPECT_EQ(find<QLabel>(dashboard, "status-line")->text(), "Updated now");
}

} // namespace
} // namespace gaugewell
