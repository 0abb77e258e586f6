#include "UsageSettingsView.h"

#include "GaugewellUI/Support/Localizable.h"
#include "GaugewellUI/Views/DesignSystem/SymbolIcon.h"
#include "MenuBarSettingsView.h"
#include "ProvidersSettingsView.h"

#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QListWidget>
#include <QStackedWidget>

namespace gaugewell {

UsageSettingsView::UsageSettingsView(Services services, SettingsDestination destination, QWidget* parent)
    : QWidget(parent)
    , sidebar(new QListWidget(this))
    , pages(new QStackedWidget(this)) {
    setObjectName(QStringLiteral("settings"));
    sidebar->setObjectName(QStringLiteral("settings-sidebar"));
    sidebar->setAccessibleName(Localizable::tr("Settings pages"));
    sidebar->setFixedWidth(168);
    sidebar->setIconSize(QSize(18, 18));
    sidebar->setFrameShape(QFrame::NoFrame);
    sidebar->setSpacing(2);
    const QColor ink = palette().color(QPalette::WindowText);
    const std::pair<const char*, QString> items[] = {{"person.crop.circle", Localizable::tr("Accounts")},
                                                     {"menubar.rectangle", Localizable::tr("Menu Bar")},
                                                     {"gearshape", Localizable::tr("General")}};
    const QColor selectedInk = palette().color(QPalette::HighlightedText);
    for (const auto& [symbol, title] : items) {
        QIcon icon = symbolIcon(symbol, ink);
        for (const qreal ratio : {1.0, 2.0}) {
            icon.addPixmap(fallbackSymbolPixmap(symbol, selectedInk, 18, ratio), QIcon::Selected);
        }
        auto* item = new QListWidgetItem(icon, title, sidebar);
        item->setSizeHint(QSize(0, 34));
    }
    // The sidebar sits on the window's own background, as a desktop's settings sidebars do.
    sidebar->setStyleSheet(QStringLiteral(
        "QListWidget { background: transparent; border: none; outline: none; padding: 10px 8px; }"
        "QListWidget::item { padding: 2px 8px; border-radius: 6px; }"
        "QListWidget::item:selected { background: palette(highlight); color: palette(highlighted-text); }"));
    pages->addWidget(new ProvidersSettingsView(services.model, services.defaults, pages));
    pages->addWidget(new MenuBarSettingsView(services.model, services.defaults, services.resetTime, pages));
    pages->addWidget(new GeneralSettingsView(services.model, services.notifications, services.defaults,
                                             services.loginItem, services.chooseSaveLocation, pages));
    connect(sidebar, &QListWidget::currentRowChanged, pages, &QStackedWidget::setCurrentIndex);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(sidebar);
    layout->addWidget(pages, 1);
    setDestination(destination);
}

void UsageSettingsView::setDestination(SettingsDestination destination) {
    sidebar->setCurrentRow(static_cast<int>(destination));
}

SettingsDestination UsageSettingsView::destination() const {
    return static_cast<SettingsDestination>(pages->currentIndex());
}

SettingsWindow::SettingsWindow(UsageSettingsView::Services services, QWidget* parent)
    : QWidget(parent, Qt::Window)
    , content(new UsageSettingsView(std::move(services), SettingsDestination::accounts, this)) {
    setObjectName(QStringLiteral("settings-window"));
    setWindowTitle(Localizable::tr("Gaugewell Settings"));
    setMinimumSize(620, 520);
    resize(640, 560);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(content);
}

void SettingsWindow::showPage(SettingsDestination destination) {
    content->setDestination(destination);
    show();
    raise();
    activateWindow();
}

QString chooseSaveLocationWithDialog(QWidget* parent, const QString& proposedName) {
    return QFileDialog::getSaveFileName(parent, Localizable::tr("Export Diagnostics…"),
                                        QDir::home().filePath(proposedName),
                                        Localizable::tr("Plain text (*.txt)"));
}

} // namespace gaugewell
