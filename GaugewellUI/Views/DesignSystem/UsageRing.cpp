#include "UsageRing.h"

#include "GaugewellUI/Support/Localizable.h"
#include "Motion.h"
#include "Palette.h"
#include "WindowTexts.h"

#include <QPainter>
#include <algorithm>

namespace gaugewell {

UsageRing::UsageRing(ProviderService service, int diameter, int lineWidth, QWidget* parent)
    : QWidget(parent)
    , service(service)
    , diameter(diameter)
    , lineWidth(lineWidth) {
    setFixedSize(diameter, diameter);
    animation.setDuration(350);
    animation.setEasingCurve(QEasingCurve::OutCubic);
    connect(&animation, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
        shown = value.toDouble();
        update();
    });
    setAccessibleName(Localizable::tr("Usage"));
    setAccessibleDescription(WindowTexts::ringAccessibleValue(std::nullopt, QString()));
}

void UsageRing::setValue(std::optional<double> newFraction, std::optional<int> newPercent,
                         const QString& newCaption) {
    fraction = newFraction;
    percent = newPercent;
    caption = newCaption;
    setAccessibleDescription(WindowTexts::ringAccessibleValue(percent, caption));
    moveShownShare(animation, shown, std::clamp(fraction.value_or(0.0), 0.0, 1.0), reduceMotion, *this);
}

void UsageRing::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool dark = isDark(palette());
    const QRectF bounds =
        QRectF(rect()).adjusted(lineWidth / 2.0, lineWidth / 2.0, -lineWidth / 2.0, -lineWidth / 2.0);
    QColor trackColor = palette().color(QPalette::WindowText);
    trackColor.setAlphaF(dark ? 0.16 : 0.10);
    painter.setPen(QPen(trackColor, lineWidth, Qt::SolidLine, Qt::RoundCap));
    painter.drawEllipse(bounds);

    if (fraction && shown > 0) {
        // One colour: a conical gradient would show a seam where its ends meet at twelve o'clock.
        painter.setPen(QPen(usageColor(service, *fraction, dark), lineWidth, Qt::SolidLine, Qt::RoundCap));
        // Clockwise from twelve o'clock; Qt counts angles anticlockwise in sixteenths of a degree.
        painter.drawArc(bounds, 90 * 16, -qRound(shown * 360 * 16));
    }

    QFont number = font();
    number.setPixelSize(std::max(10, diameter / 4));
    number.setBold(true);
    painter.setFont(number);
    painter.setPen(palette().color(QPalette::WindowText));
    const QString value =
        percent ? QString::number(*percent) + QStringLiteral("%") : QStringLiteral("\u2014");
    QRectF upper = bounds;
    if (!caption.isEmpty()) {
        upper.setBottom(bounds.center().y() + number.pixelSize() * 0.55);
    }
    painter.drawText(upper, caption.isEmpty() ? Qt::AlignCenter : Qt::AlignHCenter | Qt::AlignBottom, value);
    if (!caption.isEmpty()) {
        QFont small = font();
        small.setPixelSize(std::max(9, diameter / 8));
        painter.setFont(small);
        QColor secondary = palette().color(QPalette::WindowText);
        secondary.setAlphaF(0.65);
        painter.setPen(secondary);
        QRectF lower = bounds;
        lower.setTop(upper.bottom() + 1);
        painter.drawText(
            lower.adjusted(lineWidth, 0, -lineWidth, 0), Qt::AlignHCenter | Qt::AlignTop,
            painter.fontMetrics().elidedText(caption, Qt::ElideRight, int(lower.width() - 2 * lineWidth)));
    }
}

} // namespace gaugewell
