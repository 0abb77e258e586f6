#pragma once

#include "GaugewellUI/Application/ApplicationCore.h"
#include "GaugewellUI/Application/ApplicationServices.h"
#include "GaugewellUI/Desktop/ApplicationAction.h"
#include "GaugewellUI/Desktop/SettingsFileWatcher.h"
#include "UsagePresentation/ResetTimeFormatter.h"

#include <QObject>
#include <QPointer>
#include <memory>

namespace gaugewell {

class DashboardWindow;
class LoginItemController;
class MenuBarController;
class OnboardingWindowController;
class SettingsWindow;

// The tray application's long-lived objects and their order: the core (notifications, model,
// widget feed), then at launch the tray, the first-run window and the feed; at quit the feed's
// listener is closed. Closing a window never quits.
class GaugewellAppDelegate : public QObject {
    Q_OBJECT

public:
    GaugewellAppDelegate(ApplicationServices services, std::shared_ptr<NotificationBackend> notifications,
                         QObject* parent = nullptr);
    ~GaugewellAppDelegate() override;

    void applicationDidFinishLaunching();
    void applicationWillTerminate();

    // org.freedesktop.Application: "open the application" shows the dashboard.
    void activate();
    void perform(const ApplicationRequest& request);

    UsageAppModel& model() { return core.model(); }
    ApplicationCore& applicationCore() { return core; }
    MenuBarController* menuBar() { return menuBar_.get(); }
    // Made on first use and kept.
    SettingsWindow& settings();
    DashboardWindow& dashboard();

signals:
    void quitRequested();

private:
    ApplicationServices services;
    ApplicationCore core;
    SettingsFileWatcher settingsWatcher;
    std::shared_ptr<const ResetTimeFormatter> resetTime;
    std::unique_ptr<LoginItemController> loginItem;
    std::unique_ptr<SettingsWindow> settingsWindow;
    std::unique_ptr<DashboardWindow> dashboardWindow;
    std::unique_ptr<MenuBarController> menuBar_;
    std::unique_ptr<OnboardingWindowController> onboarding;
};

} // namespace gaugewell
