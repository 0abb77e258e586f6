#include "PopupWindow.h"

#include "GaugewellUI/Views/DesignSystem/Palette.h"
#include "PopupPlacement.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QScreen>
#include <QVBoxLayout>

namespace gaugewell {

bool PopupWindow::framelessPopupsWork() {
    return !QGuiApplication::platformName().startsWith(QStringLiteral("wayland"));
}

PopupWindow::PopupWindow(QWidget* content, QWidget* parent)
    : QWidget(parent, framelessPopupsWork() ? Qt::Popup | Qt::FramelessWindowHint : Qt::Window) {
    setObjectName(QStringLiteral("popup"));
    setWindowTitle(QStringLiteral("Gaugewell"));
    setFixedSize(popupSize);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(1, 1, 1, 1);
    layout->addWidget(content);
    if (!framelessPopupsWork()) {
        connect(qGuiApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
            if (state != Qt::ApplicationActive) {
                hide();
            }
        });
    }
}

void PopupWindow::showAt(const QRect& iconGeometry, const QPoint& cursor) {
    const QPoint anchor = iconGeometry.isValid() ? iconGeometry.center() : cursor;
    QScreen* screen = QGuiApplication::screenAt(anchor);
    if (screen == nullptr) {
        screen = QGuiApplication::primaryScreen();
    }
    if (screen != nullptr) {
        move(popupPosition(iconGeometry, cursor, popupSize, screen->availableGeometry()));
    }
    show();
    raise();
    activateWindow();
}

void PopupWindow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Window));
    QColor border = palette().color(QPalette::WindowText);
    border.setAlphaF(isDark(palette()) ? 0.28 : 0.22);
    painter.setPen(border);
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

void PopupWindow::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    emit visibilityChanged(true);
}

void PopupWindow::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    emit visibilityChanged(false);
}

void PopupWindow::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        hide();
        return;
    }
    QWidget::keyPressEvent(event);
}

} // namespace gaugewell
