#include "FreshnessBadge.h"

#include "Palette.h"
#include "Typography.h"
#include "UsageDomain/UsageWindowSample.h"
#include "WindowTexts.h"

#include <QPainter>

namespace gaugewell {

FreshnessBadge::FreshnessBadge(QWidget* parent)
    : QLabel(parent) {
    applyTextStyle(this, TextStyle::caption);
    setAlignment(Qt::AlignCenter);
    hide();
}

void FreshnessBadge::setSample(const UsageWindowSample& sample) {
    const auto text = WindowTexts::freshnessBadge(sample);
    setText(text.value_or(QString()));
    setAccessibleName(text.value_or(QString()));
    setVisible(text.has_value());
}

QSize FreshnessBadge::sizeHint() const {
    const QSize textSize = fontMetrics().size(Qt::TextSingleLine, text());
    return {textSize.width() + 12, textSize.height() + 4};
}

void FreshnessBadge::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool dark = isDark(palette());
    QColor accent = designColor(DesignColor::accentIndigo, dark);
    QColor fill = accent;
    fill.setAlphaF(dark ? 0.22 : 0.12);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    const QRectF capsule = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.drawRoundedRect(capsule, capsule.height() / 2, capsule.height() / 2);
    painter.setPen(dark ? accent : accent.darker(130));
    painter.drawText(rect(), Qt::AlignCenter, text());
}

} // namespace gaugewell
