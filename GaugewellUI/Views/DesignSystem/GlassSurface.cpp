#include "GlassSurface.h"

#include "Palette.h"

#include <QPainter>
#include <QPainterPath>

namespace gaugewell {

GlassSurface::GlassSurface(QWidget* parent, int cornerRadius)
    : QFrame(parent)
    , cornerRadius(cornerRadius) {
    setFrameShape(QFrame::NoFrame);
    setAttribute(Qt::WA_Hover);
}

void GlassSurface::setTint(std::optional<QColor> newTint) {
    tint = newTint;
    update();
}

void GlassSurface::setInteractive(bool value) {
    interactive = value;
    update();
}

void GlassSurface::setReduceTransparency(bool reduce) {
    reduceTransparency = reduce;
    update();
}

void GlassSurface::enterEvent(QEnterEvent* event) {
    hovered = true;
    update();
    QFrame::enterEvent(event);
}

void GlassSurface::leaveEvent(QEvent* event) {
    hovered = false;
    update();
    QFrame::leaveEvent(event);
}

void GlassSurface::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool dark = isDark(palette());
    const QRectF shape = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    // Lighter than the window in both schemes, so that the panel lifts off the background.
    QColor fill = dark ? palette().color(QPalette::Window).lighter(135) : QColor(Qt::white);
    if (!reduceTransparency) {
        fill.setAlphaF(dark ? 0.55 : 0.72);
    }
    if (tint) {
        QColor wash = *tint;
        wash.setAlphaF(dark ? 0.14 : 0.08);
        painter.setBrush(fill);
        painter.setPen(Qt::NoPen);
        painter.drawRoundedRect(shape, cornerRadius, cornerRadius);
        fill = wash;
    }
    if (interactive && hovered) {
        fill = fill.lighter(dark ? 130 : 103);
    }
    QColor border = palette().color(QPalette::WindowText);
    border.setAlphaF(dark ? 0.16 : 0.10);
    painter.setBrush(fill);
    painter.setPen(QPen(border, 1));
    painter.drawRoundedRect(shape, cornerRadius, cornerRadius);
}

} // namespace gaugewell
