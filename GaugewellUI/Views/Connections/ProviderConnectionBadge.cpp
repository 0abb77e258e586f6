#include "ProviderConnectionBadge.h"

#include "ConnectionPresenter.h"
#include "GaugewellUI/Model/UsageAppModel.h"
#include "GaugewellUI/Views/DesignSystem/Palette.h"
#include "GaugewellUI/Views/DesignSystem/Typography.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>

namespace gaugewell {

ProviderConnectionBadge::ProviderConnectionBadge(UsageAppModel& model, ProviderService service,
                                                 QWidget* parent)
    : QWidget(parent)
    , model(model)
    , service(service)
    , text(makeLabel(QString(), TextStyle::callout, this)) {
    setObjectName(QStringLiteral("connection-%1").arg(QString::fromUtf8(rawValue(service))));
    makeSecondary(text);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(14, 0, 0, 0); // room for the dot
    layout->addWidget(text);
    connect(&model, &UsageAppModel::connectionStatesChanged, this, &ProviderConnectionBadge::refresh);
    refresh();
}

void ProviderConnectionBadge::refresh() {
    const auto badge = connectionBadge(model.connectionState(service));
    text->setText(badge.text);
    setAccessibleName(badge.text);
    const bool dark = isDark(palette());
    switch (badge.tone) {
    case ConnectionTone::good:
        dot = designColor(DesignColor::codexBase, dark);
        break;
    case ConnectionTone::attention:
        dot = designColor(DesignColor::amber, dark);
        break;
    case ConnectionTone::problem:
        dot = designColor(DesignColor::red, dark);
        break;
    case ConnectionTone::neutral:
        dot = palette().color(QPalette::PlaceholderText);
        break;
    }
    update();
}

void ProviderConnectionBadge::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(dot);
    painter.drawEllipse(QPointF(4.5, height() / 2.0), 4, 4);
}

} // namespace gaugewell
