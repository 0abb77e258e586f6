#include "SettingsPage.h"

#include "GaugewellUI/Support/Localizable.h"
#include "GaugewellUI/Views/DesignSystem/GlassSurface.h"
#include "GaugewellUI/Views/DesignSystem/SymbolLabel.h"
#include "GaugewellUI/Views/DesignSystem/Typography.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>
#include <QVBoxLayout>

namespace gaugewell {

SettingsPage::SettingsPage(const QString& title, const QString& subtitle, QWidget* parent)
    : QScrollArea(parent)
    , body(new QWidget(this))
    , layout(new QVBoxLayout(body)) {
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    viewport()->setAutoFillBackground(false);
    body->setAutoFillBackground(false);
    layout->setContentsMargins(22, 18, 22, 18);
    layout->setSpacing(8);
    layout->addWidget(makeLabel(title, TextStyle::largeTitle, body));
    auto* sub = makeLabel(subtitle, TextStyle::body, body);
    sub->setWordWrap(true);
    makeSecondary(sub);
    layout->addWidget(sub);
    layout->addSpacing(6);
    setAccessibleName(title);
}

QVBoxLayout* SettingsPage::addSection(const QString& title, const char* symbol) {
    auto* heading = new QHBoxLayout;
    heading->setSpacing(6);
    if (symbol != nullptr) {
        heading->addWidget(new SymbolLabel(symbol, 14, body));
    }
    auto* label = makeLabel(title, TextStyle::headline, body);
    heading->addWidget(label);
    heading->addStretch();
    layout->addSpacing(6);
    layout->addLayout(heading);
    auto* panel = new GlassSurface(body, 10);
    panel->setAccessibleName(title);
    auto* rows = new QVBoxLayout(panel);
    rows->setContentsMargins(14, 10, 14, 10);
    rows->setSpacing(8);
    layout->addWidget(panel);
    return rows;
}

QVBoxLayout* SettingsPage::addCollapsibleSection(const QString& title, const char* symbol,
                                                 const QString& objectName) {
    auto* rows = addSection(title, symbol);
    auto* panel = rows->parentWidget();
    auto* heading = qobject_cast<QHBoxLayout*>(layout->itemAt(layout->indexOf(panel) - 1)->layout());
    auto* disclosure = new QToolButton(body);
    disclosure->setObjectName(objectName);
    disclosure->setAutoRaise(true);
    disclosure->setArrowType(Qt::RightArrow);
    disclosure->setCheckable(true);
    disclosure->setAccessibleName(formatted(Localizable::tr("Show %@"), {title}));
    heading->insertWidget(0, disclosure);
    panel->hide();
    connect(disclosure, &QToolButton::toggled, panel, [disclosure, panel](bool open) {
        disclosure->setArrowType(open ? Qt::DownArrow : Qt::RightArrow);
        panel->setVisible(open);
    });
    return rows;
}

void SettingsPage::addWidget(QWidget* widget) {
    widget->setParent(body);
    layout->addWidget(widget);
}

void SettingsPage::finish() {
    layout->addStretch();
    setWidget(body);
}

SettingsToggleRow::SettingsToggleRow(const QString& title, const QString& detail, QWidget* parent)
    : QWidget(parent)
    , box(new QCheckBox(title, this))
    , detailLabel(makeLabel(detail, TextStyle::caption, this)) {
    box->setAccessibleName(title);
    makeSecondary(detailLabel);
    detailLabel->setWordWrap(true);
    detailLabel->setContentsMargins(24, 0, 0, 0);
    detailLabel->setVisible(!detail.isEmpty());
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(1);
    layout->addWidget(box);
    layout->addWidget(detailLabel);
}

void SettingsToggleRow::setDetail(const QString& detail) {
    detailLabel->setText(detail);
    detailLabel->setVisible(!detail.isEmpty());
    box->setAccessibleDescription(detail);
}

QWidget* labelledRow(const QString& label, QWidget* control, QWidget* parent) {
    auto* row = new QWidget(parent);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* text = makeLabel(label, TextStyle::body, row);
    text->setBuddy(control);
    layout->addWidget(text);
    layout->addStretch();
    control->setParent(row);
    layout->addWidget(control);
    if (control->accessibleName().isEmpty()) {
        control->setAccessibleName(label);
    }
    return row;
}

} // namespace gaugewell
