#include "MenuBarPreview.h"

#include "GaugewellUI/Support/Localizable.h"
#include "GaugewellUI/Views/DesignSystem/ProviderMarkImage.h"
#include "GaugewellUI/Views/DesignSystem/SymbolIcon.h"
#include "GaugewellUI/Views/Tray/TrayIcon.h"

#include <QPainter>

namespace gaugewell {

MenuBarPreview::MenuBarPreview(QWidget* parent)
    : QWidget(parent) {
    setObjectName(QStringLiteral("menu-bar-preview"));
    setMinimumHeight(34);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void MenuBarPreview::setProjection(const MenuBarProjection& newProjection, const QImage& newTrayIcon) {
    projection = newProjection;
    trayIcon = newTrayIcon;
    setAccessibleName(formatted(Localizable::tr("Menu bar preview: %@"), {spokenLabel(projection)}));
    update();
}

void MenuBarPreview::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF strip = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x26, 0x28, 0x2c));
    painter.drawRoundedRect(strip, 8, 8);

    const QColor ink(0xf2, 0xf3, 0xf5);
    qreal x = strip.right() - 10;
    // Right to left, as a panel's status area fills: the battery, then the tray icon and texts.
    const QPixmap battery = fallbackSymbolPixmap("battery.75", ink, 16, devicePixelRatioF());
    x -= 16;
    painter.drawPixmap(QPointF(x, strip.center().y() - 8), battery);
    x -= 14;
    if (!trayIcon.isNull()) {
        x -= 22;
        painter.drawImage(QRectF(x, strip.center().y() - 11, 22, 22), trayIcon);
        x -= 12;
    }
    QFont font = this->font();
    font.setPixelSize(12);
    painter.setFont(font);
    const QFontMetricsF metrics(font);
    for (auto entry = projection.entries.rbegin(); entry != projection.entries.rend(); ++entry) {
        const QString text = QString::fromStdString(entry->text);
        if (!text.isEmpty()) {
            const qreal width = metrics.horizontalAdvance(text);
            x -= width;
            painter.setPen(ink);
            painter.drawText(QRectF(x, strip.top(), width + 1, strip.height()), Qt::AlignVCenter, text);
            x -= 3;
        }
        if (const auto service = serviceForProviderID(entry->providerID)) {
            x -= 15;
            painter.drawPixmap(QPointF(x, strip.center().y() - 7.5),
                               ProviderMarkImage::pixmap(*service, 15, ink, devicePixelRatioF()));
        }
        x -= 12;
    }
}

} // namespace gaugewell
