#include "GaugewellAppDelegate.h"

#include "GaugewellUI/Desktop/LoginItemController.h"
#include "GaugewellUI/Views/Dashboard/DashboardView.h"
#include "GaugewellUI/Views/Onboarding/OnboardingWindowController.h"
#include "GaugewellUI/Views/Settings/UsageSettingsView.h"
#include "GaugewellUI/Views/Tray/MenuBarController.h"

#include <QGuiApplication>
#include <QScreen>
#include <QSystemTrayIcon>

namespace gaugewell {

GaugewellAppDelegate::GaugewellAppDelegate(ApplicationServices services,
                                           std::shared_ptr<NotificationBackend> notifications,
                                           QObject* parent)
    : QObject(parent)
    , services(services)
    , core(services.defaults, std::move(notifications),
           [services](UsageAppModel::RefreshHooks hooks) {
               return std::make_unique<UsageAppModel>(UsageAppModel::Dependencies{
                   services.authentication, services.collectors, services.defaults, std::move(hooks)});
           })
    , settingsWatcher(services.settingsFile)
    , resetTime(std::make_shared<IcuResetTimeFormatter>())
    , loginItem(std::make_unique<LoginItemController>(LoginItemController::runningExecutablePath(),
                                                      LoginItemController::defaultAutostartFolder())) {}

namespace {

void centreOnScreen(QWidget& window) {
    if (QScreen* screen = QGuiApplication::primaryScreen()) {
        const QRect available = screen->availableGeometry();
        window.move(available.center() - QPoint(window.width() / 2, window.height() / 2));
    }
}

} // namespace

DashboardWindow& GaugewellAppDelegate::dashboard() {
    if (!dashboardWindow) {
        dashboardWindow = std::make_unique<DashboardWindow>(core.model(), [this] {
            if (menuBar_) {
                menuBar_->openSettings(std::nullopt);
            }
        });
        centreOnScreen(*dashboardWindow);
    }
    return *dashboardWindow;
}

SettingsWindow& GaugewellAppDelegate::settings() {
    if (!settingsWindow) {
        settingsWindow = std::make_unique<SettingsWindow>(
            UsageSettingsView::Services{core.model(), core.notifications(), services.defaults, resetTime,
                                        *loginItem, chooseSaveLocationWithDialog});
        centreOnScreen(*settingsWindow);
    }
    return *settingsWindow;
}

GaugewellAppDelegate::~GaugewellAppDelegate() = default;

void GaugewellAppDelegate::applicationDidFinishLaunching() {
    menuBar_ = std::make_unique<MenuBarController>(
        core.model(), services.defaults,
        MenuBarController::Options{resetTime,
                                   [] { return std::chrono::system_clock::now(); },
                                   [this] { emit quitRequested(); },
                                   {[this]() -> QWidget* { return &dashboard(); },
                                    [this](SettingsDestination page) -> QWidget* {
                                        settings().view().setDestination(page);
                                        return &settings();
                                    }}});
    onboarding = std::make_unique<OnboardingWindowController>(core.model(), services.defaults);
    onboarding->showIfNeeded();
    if (!QSystemTrayIcon::isSystemTrayAvailable()) {
        menuBar_->showWithoutTray();
    }
    core.start(false); // the tray starts the model when it first shows it
}

void GaugewellAppDelegate::applicationWillTerminate() {
    core.stop();
}

void GaugewellAppDelegate::activate() {
    if (menuBar_) {
        menuBar_->openDashboard();
    }
}

void GaugewellAppDelegate::perform(const ApplicationRequest& request) {
    if (!menuBar_) {
        return;
    }
    switch (request.action) {
    case ApplicationAction::popup:
        if (!menuBar_->isPopoverShown()) {
            menuBar_->togglePopover();
        }
        break;
    case ApplicationAction::dashboard:
        menuBar_->openDashboard();
        break;
    case ApplicationAction::settings:
        menuBar_->openSettings(request.page);
        break;
    case ApplicationAction::refresh:
        core.model().refresh(RefreshTrigger::manual);
        break;
    case ApplicationAction::quit:
        emit quitRequested();
        break;
    }
}

} // namespace gaugewell
