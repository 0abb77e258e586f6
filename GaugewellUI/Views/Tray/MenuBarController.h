#pragma once

#include "GaugewellUI/Desktop/ApplicationAction.h"
#include "Platform/UserDefaults.h"
#include "UsagePresentation/MenuBarProjection.h"
#include "UsagePresentation/ResetTimeFormatter.h"

#include <QMenu>
#include <QObject>
#include <QPointer>
#include <QSystemTrayIcon>
#include <QTimer>
#include <functional>
#include <memory>
#include <optional>

namespace gaugewell {

class PopupWindow;
class UsageAppModel;
class UsagePopoverView;

// The tray icon and everything it opens: drawn from the menu-bar projection (redrawn only when
// that changes, though it is recomputed on every model change, every settings change and every
// minute), a left click toggles the popup, the context menu offers Refresh, Open Dashboard,
// Settings and Quit. The dashboard and settings windows are made on first use and reused.
class MenuBarController : public QObject {
    Q_OBJECT

public:
    struct Windows {
        // Each returns the window to show (kept and reused by the caller); null = not available.
        std::function<QWidget*()> dashboard;
        std::function<QWidget*(SettingsDestination)> settings;
    };
    struct Options {
        std::shared_ptr<const ResetTimeFormatter> resetTime;
        std::function<Date()> clock;
        std::function<void()> quit;
        Windows windows;
    };

    MenuBarController(UsageAppModel& model, std::shared_ptr<UserDefaults> defaults, Options options,
                      QObject* parent = nullptr);
    ~MenuBarController() override;

    // Recomputes the projection; redraws the icon, tooltip and accessible name only when it changed.
    void render();
    void togglePopover();
    void openDashboard();
    void openSettings(std::optional<SettingsDestination> page);
    // Without a tray host: the popup's content in a small window, once, with a hint.
    void showWithoutTray();

    bool isPopoverShown() const;
    const std::optional<MenuBarProjection>& renderedProjection() const { return rendered; }
    int redrawCount() const { return redraws; }
    QSystemTrayIcon& statusItem() { return tray; }
    QString accessibleName() const { return accessibleName_; }
    PopupWindow& popover();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void updateInteractive();
    void showWindow(QWidget* window);

    UsageAppModel& model;
    std::shared_ptr<UserDefaults> defaults;
    Options options;
    QSystemTrayIcon tray;
    QMenu menu;
    QTimer countdownTick;
    UserDefaults::Subscription settingsSubscription;
    std::unique_ptr<PopupWindow> popup;
    std::unique_ptr<QWidget> fallbackWindow;
    std::optional<MenuBarProjection> rendered;
    QString accessibleName_;
    int redraws = 0;
};

// The tooltip: one line per shown provider with its name and text, or the spoken label when the
// text is empty (icons only, or nothing shown).
QString trayTooltip(const MenuBarProjection& projection);

} // namespace gaugewell
