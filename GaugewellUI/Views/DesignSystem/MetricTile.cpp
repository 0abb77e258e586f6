#include "MetricTile.h"

#include "Typography.h"

#include <QLabel>
#include <QVBoxLayout>

namespace gaugewell {

MetricTile::MetricTile(const QString& labelText, QWidget* parent)
    : GlassSurface(parent, 10)
    , label(makeLabel(labelText, TextStyle::caption, this))
    , value(makeLabel(QString(), TextStyle::headline, this))
    , detail(makeLabel(QString(), TextStyle::caption, this)) {
    makeSecondary(label);
    makeSecondary(detail);
    detail->hide();
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(10, 8, 10, 8);
    layout->setSpacing(2);
    layout->addWidget(label);
    layout->addWidget(value);
    layout->addWidget(detail);
    setAccessibleName(labelText);
}

void MetricTile::setValue(const QString& valueText, const std::optional<QString>& detailText) {
    value->setText(valueText);
    detail->setText(detailText.value_or(QString()));
    detail->setVisible(detailText.has_value() && !detailText->isEmpty());
    setAccessibleDescription(detailText ? valueText + QStringLiteral(", ") + *detailText : valueText);
}

void MetricTile::setEmphasis(bool emphasis) {
    applyTextStyle(value, emphasis ? TextStyle::largeTitle : TextStyle::headline);
}

void MetricTile::setValueTint(std::optional<QColor> tint) {
    QPalette palette = value->palette();
    palette.setColor(QPalette::WindowText, tint.value_or(this->palette().color(QPalette::WindowText)));
    value->setPalette(palette);
}

} // namespace gaugewell
