#include "UsageMeter.h"

#include "Motion.h"
#include "Palette.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>

namespace gaugewell {

UsageMeter::UsageMeter(ProviderService service, int height, QWidget* parent)
    : QWidget(parent)
    , service(service)
    , barHeight(height) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setFixedHeight(height);
    animation.setDuration(250);
    animation.setEasingCurve(QEasingCurve::OutCubic);
    connect(&animation, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
        shown = value.toDouble();
        update();
    });
}

void UsageMeter::setFraction(std::optional<double> fraction) {
    target = fraction;
    moveShownShare(animation, shown, std::clamp(fraction.value_or(0.0), 0.0, 1.0), reduceMotion, *this);
}

void UsageMeter::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool dark = isDark(palette());
    const QRectF track = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    const qreal radius = track.height() / 2;
    QColor trackColor = palette().color(QPalette::WindowText);
    trackColor.setAlphaF(dark ? 0.16 : 0.10);
    painter.setPen(Qt::NoPen);
    painter.setBrush(trackColor);
    painter.drawRoundedRect(track, radius, radius);
    if (!target || shown <= 0) {
        return;
    }
    QRectF filled = track;
    filled.setWidth(std::max(track.height(), track.width() * shown));
    const auto colors = ProviderPalette::of(service, dark);
    QLinearGradient gradient(filled.topLeft(), filled.topRight());
    gradient.setColorAt(0, colors.base);
    gradient.setColorAt(1, *target >= 0.9 ? usageColor(service, *target, dark) : colors.highlight);
    painter.setBrush(gradient);
    painter.drawRoundedRect(filled, radius, radius);
}

} // namespace gaugewell
