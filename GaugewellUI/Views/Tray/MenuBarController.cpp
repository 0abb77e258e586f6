#include "MenuBarController.h"

#include "GaugewellUI/Model/UsageAppModel.h"
#include "GaugewellUI/Support/Localizable.h"
#include "GaugewellUI/Views/DesignSystem/Palette.h"
#include "GaugewellUI/Views/DesignSystem/SymbolIcon.h"
#include "GaugewellUI/Views/DesignSystem/Typography.h"
#include "PopupWindow.h"
#include "TrayIcon.h"
#include "UsagePopoverView.h"

#include <QApplication>
#include <QCursor>
#include <QLabel>
#include <QScreen>
#include <QVBoxLayout>

namespace gaugewell {

QString trayTooltip(const MenuBarProjection& projection) {
    QStringList lines;
    for (const auto& entry : projection.entries) {
        if (entry.text.empty()) {
            continue;
        }
        const QString text = QString::fromStdString(entry.text);
        const QString name = QString::fromStdString(entry.displayName);
        lines << (text.startsWith(name) ? text : name + QStringLiteral(" ") + text);
    }
    return lines.isEmpty() ? spokenLabel(projection) : lines.join(QLatin1Char('\n'));
}

MenuBarController::MenuBarController(UsageAppModel& model, std::shared_ptr<UserDefaults> defaults,
                                     Options options, QObject* parent)
    : QObject(parent)
    , model(model)
    , defaults(std::move(defaults))
    , options(std::move(options)) {
    tray.setObjectName(QStringLiteral("status-item"));
    const QColor menuInk = QApplication::palette().color(QPalette::WindowText);
    menu.addAction(symbolIcon("arrow.clockwise", menuInk), Localizable::tr("Refresh"), this,
                   [this] { this->model.refresh(RefreshTrigger::manual); });
    menu.addAction(Localizable::tr("Open Dashboard"), this, &MenuBarController::openDashboard);
    menu.addAction(symbolIcon("gearshape", menuInk), Localizable::tr("Settings"), this,
                   [this] { openSettings(std::nullopt); });
    menu.addSeparator();
    menu.addAction(symbolIcon("power", menuInk), Localizable::tr("Quit Gaugewell"), this,
                   [this] { this->options.quit(); });
    tray.setContextMenu(&menu);
    connect(&tray, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger) {
            togglePopover();
        }
    });

    connect(&model, &UsageAppModel::providersChanged, this, &MenuBarController::render);
    settingsSubscription = this->defaults->observe([this](const std::string&) {
        QMetaObject::invokeMethod(this, &MenuBarController::render, Qt::QueuedConnection);
    });
    connect(qApp, &QGuiApplication::applicationStateChanged, this, &MenuBarController::updateInteractive);
    qApp->installEventFilter(this);
    // Reset times and "in 2 hr." move on even when nothing is refreshed.
    countdownTick.setInterval(std::chrono::seconds(60));
    countdownTick.setTimerType(Qt::CoarseTimer);
    connect(&countdownTick, &QTimer::timeout, this, &MenuBarController::render);
    countdownTick.start();
    render();
    tray.show();
    model.start();
}

MenuBarController::~MenuBarController() = default;

bool MenuBarController::eventFilter(QObject* watched, QEvent* event) {
    if (watched == qApp && event->type() == QEvent::ApplicationPaletteChange) {
        rendered.reset(); // a new panel colour needs new ink
        QMetaObject::invokeMethod(this, &MenuBarController::render, Qt::QueuedConnection);
    }
    return QObject::eventFilter(watched, event);
}

void MenuBarController::render() {
    const auto snapshots = model.menuSnapshots();
    const auto configuration = MenuBarConfiguration::fromDefaults(*defaults);
    auto projection = MenuBarProjection::project(snapshots, configuration, *options.resetTime);
    if (rendered == projection && !tray.icon().isNull()) {
        return;
    }
    const auto rings = trayIconRings(projection, snapshots, configuration);
    const bool darkPanel = isDark(QApplication::palette());
    QIcon icon;
    const qreal ratio = qApp->devicePixelRatio();
    for (const int size : {16, 22, 24, 32, 48}) {
        icon.addPixmap(QPixmap::fromImage(drawTrayIcon(rings, size, ratio, darkPanel)));
    }
    tray.setIcon(icon);
    tray.setToolTip(trayTooltip(projection));
    accessibleName_ = spokenLabel(projection);
    rendered = std::move(projection);
    ++redraws;
}

PopupWindow& MenuBarController::popover() {
    if (!popup) {
        auto* view = new UsagePopoverView(
            model, defaults,
            {[this] { openDashboard(); }, [this] { openSettings(std::nullopt); }, [this] { options.quit(); }},
            options.clock);
        popup = std::make_unique<PopupWindow>(view);
        connect(popup.get(), &PopupWindow::visibilityChanged, this, &MenuBarController::updateInteractive);
    }
    return *popup;
}

bool MenuBarController::isPopoverShown() const {
    return popup && popup->isVisible();
}

void MenuBarController::togglePopover() {
    if (isPopoverShown()) {
        popup->hide();
        return;
    }
    popover().showAt(tray.geometry(), QCursor::pos());
    model.start();
    model.refreshIfDue();
}

void MenuBarController::showWindow(QWidget* window) {
    if (popup) {
        popup->hide();
    }
    window->show();
    window->raise();
    window->activateWindow();
}

void MenuBarController::openDashboard() {
    QWidget* window = options.windows.dashboard ? options.windows.dashboard() : nullptr;
    if (window == nullptr) {
        popover().showAt(tray.geometry(), QCursor::pos());
        return;
    }
    showWindow(window);
}

void MenuBarController::openSettings(std::optional<SettingsDestination> page) {
    QWidget* window = options.windows.settings
                          ? options.windows.settings(page.value_or(SettingsDestination::accounts))
                          : nullptr;
    if (window == nullptr) {
        popover().showAt(tray.geometry(), QCursor::pos());
        return;
    }
    showWindow(window);
}

void MenuBarController::showWithoutTray() {
    if (!fallbackWindow) {
        fallbackWindow = std::make_unique<QWidget>();
        fallbackWindow->setObjectName(QStringLiteral("no-tray-window"));
        fallbackWindow->setWindowTitle(QStringLiteral("Gaugewell"));
        auto* layout = new QVBoxLayout(fallbackWindow.get());
        layout->setContentsMargins(0, 10, 0, 0);
        auto* hint =
            makeLabel(Localizable::tr(
                          "No system tray was found. Add a tray to your panel, or show `gaugewell widget` in "
                          "your status bar, to keep Gaugewell at hand; it keeps running in the background."),
                      TextStyle::callout, fallbackWindow.get());
        hint->setObjectName(QStringLiteral("no-tray-hint"));
        hint->setWordWrap(true);
        hint->setContentsMargins(14, 0, 14, 0);
        makeSecondary(hint);
        layout->addWidget(hint);
        layout->addWidget(new UsagePopoverView(
            model, defaults,
            {[this] { openDashboard(); }, [this] { openSettings(std::nullopt); }, [this] { options.quit(); }},
            options.clock));
        fallbackWindow->resize(PopupWindow::popupSize.width(), PopupWindow::popupSize.height() + 60);
    }
    showWindow(fallbackWindow.get());
    model.start();
}

void MenuBarController::updateInteractive() {
    model.setInteractive(isPopoverShown() || QGuiApplication::applicationState() == Qt::ApplicationActive);
}

} // namespace gaugewell
