#include "TrayIcon.h"

#include "GaugewellUI/Support/Localizable.h"
#include "GaugewellUI/Views/DesignSystem/Palette.h"
#include "UsagePresentation/UsagePercentage.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>

namespace gaugewell {

std::vector<TrayIconRing> trayIconRings(const MenuBarProjection& projection,
                                        const std::vector<ProviderMenuSnapshot>& snapshots,
                                        const MenuBarConfiguration& configuration) {
    std::vector<TrayIconRing> rings;
    for (const auto& entry : projection.entries) {
        const auto service = serviceForProviderID(entry.providerID);
        if (!service) {
            continue;
        }
        TrayIconRing ring{*service, std::nullopt, std::nullopt, std::nullopt};
        const auto snapshot = std::find_if(snapshots.begin(), snapshots.end(), [&](const auto& candidate) {
            return candidate.providerID == entry.providerID;
        });
        if (snapshot != snapshots.end()) {
            const UsageWindowSample* window =
                menuBarWindow(snapshot->windows, configuration.selectedWindowKind);
            if (window != nullptr && window->usedFraction()) {
                const double used = window->usedFraction()->toDouble();
                ring.usedFraction = used;
                ring.shownFraction = configuration.percentageMode == PercentageDisplayMode::remaining
                                         ? std::max(0.0, 1 - used)
                                         : used;
                if (configuration.showPercentage) {
                    const auto percent =
                        displayedPercentage(*window->usedFraction(), configuration.percentageMode);
                    if (percent && *percent >= 0 && *percent < 100) {
                        ring.percent = static_cast<int>(*percent);
                    }
                }
            }
        }
        rings.push_back(ring);
    }
    return rings;
}

namespace {

QColor ink(bool darkPanel, qreal alpha = 1.0) {
    QColor color = darkPanel ? QColor(0xf2, 0xf3, 0xf5) : QColor(0x23, 0x25, 0x29);
    color.setAlphaF(alpha);
    return color;
}

void drawRing(QPainter& painter, const QRectF& bounds, qreal width, const TrayIconRing& ring,
              bool darkPanel) {
    const QRectF track = bounds.adjusted(width / 2, width / 2, -width / 2, -width / 2);
    painter.setBrush(Qt::NoBrush);
    // Mid grey reads on light and dark panels alike: the panel's colour is only a guess.
    painter.setPen(
        QPen(QColor(128, 130, 136, ring.shownFraction ? 120 : 170), width, Qt::SolidLine, Qt::FlatCap));
    if (ring.shownFraction) {
        painter.drawEllipse(track);
    } else {
        // Not known: a broken track, so that "unknown" never reads as "empty".
        QPen dashed = painter.pen();
        dashed.setDashPattern({1.2, 1.2});
        painter.setPen(dashed);
        painter.drawEllipse(track);
        return;
    }
    const double shown = std::clamp(*ring.shownFraction, 0.0, 1.0);
    if (shown <= 0) {
        return;
    }
    painter.setPen(QPen(usageColor(ring.service, ring.usedFraction.value_or(0), darkPanel), width,
                        Qt::SolidLine, shown >= 1 ? Qt::FlatCap : Qt::RoundCap));
    painter.drawArc(track, 90 * 16, -qRound(shown * 360 * 16));
}

void drawGauge(QPainter& painter, const QRectF& bounds, bool darkPanel) {
    const qreal width = bounds.width() * 0.13;
    const QRectF dial = bounds.adjusted(width, width * 1.6, -width, 0);
    painter.setPen(QPen(ink(darkPanel), width, Qt::SolidLine, Qt::RoundCap));
    painter.drawArc(dial, -30 * 16, 240 * 16);
    const QPointF centre = dial.center();
    const qreal length = dial.width() * 0.36;
    painter.drawLine(centre, centre + QPointF(length * 0.7, -length * 0.7));
    painter.setBrush(ink(darkPanel));
    painter.drawEllipse(centre, width * 0.7, width * 0.7);
}

} // namespace

QImage drawTrayIcon(const std::vector<TrayIconRing>& rings, int size, qreal devicePixelRatio,
                    bool darkPanel) {
    const int pixels = qRound(size * devicePixelRatio);
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    image.setDevicePixelRatio(devicePixelRatio);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF bounds(1, 1, size - 2, size - 2);
    if (rings.empty()) {
        drawGauge(painter, bounds, darkPanel);
        return image;
    }
    if (rings.size() == 1) {
        const qreal width = std::max(2.5, size * 0.16);
        drawRing(painter, bounds, width, rings.front(), darkPanel);
        if (rings.front().percent) {
            QFont font;
            font.setPixelSize(std::max(7, qRound(size * (*rings.front().percent >= 10 ? 0.40 : 0.46))));
            font.setBold(true);
            font.setLetterSpacing(QFont::PercentageSpacing, 92);
            // The figure with a thin halo of the opposite colour, legible whatever the panel is.
            QPainterPath figure;
            const QString text = QString::number(*rings.front().percent);
            const QFontMetricsF metrics(font);
            const QRectF box = metrics.tightBoundingRect(text);
            figure.addText(bounds.center() - box.center(), font, text);
            painter.setPen(QPen(ink(!darkPanel, 0.85), std::max(1.0, size / 14.0), Qt::SolidLine,
                                Qt::RoundCap, Qt::RoundJoin));
            painter.setBrush(Qt::NoBrush);
            painter.drawPath(figure);
            painter.setPen(Qt::NoPen);
            painter.setBrush(ink(darkPanel));
            painter.drawPath(figure);
        }
        return image;
    }
    // Concentric rings, the first provider outside; more than two do not fit a tray slot.
    const qreal width = std::max(2.0, size * 0.14);
    const qreal gap = std::max(1.0, size * 0.06);
    drawRing(painter, bounds, width, rings[0], darkPanel);
    drawRing(painter, bounds.adjusted(width + gap, width + gap, -width - gap, -width - gap), width, rings[1],
             darkPanel);
    return image;
}

QString spokenLabel(const MenuBarProjection& projection) {
    if (projection.accessibilityLabel == "Gaugewell unavailable") {
        return Localizable::tr("Gaugewell unavailable");
    }
    QString label = QString::fromStdString(projection.accessibilityLabel);
    label.replace(QStringLiteral(", usage unavailable"), Localizable::tr(", usage unavailable"));
    label.replace(QStringLiteral(" consumed"), Localizable::tr(" consumed"));
    label.replace(QStringLiteral(" remaining"), Localizable::tr(" remaining"));
    label.replace(QStringLiteral(", resets at "), Localizable::tr(", resets at "));
    return label;
}

} // namespace gaugewell
