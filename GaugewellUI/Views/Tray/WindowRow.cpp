#include "WindowRow.h"

#include "GaugewellUI/Views/DesignSystem/SymbolLabel.h"
#include "GaugewellUI/Views/DesignSystem/Typography.h"
#include "GaugewellUI/Views/DesignSystem/UsageMeter.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace gaugewell {

void showWindowRows(std::vector<WindowRow*>& rows, const std::vector<WindowRowContent>& contents,
                    ProviderService service, QBoxLayout* layout, QWidget* parent) {
    while (rows.size() > contents.size()) {
        delete rows.back();
        rows.pop_back();
    }
    while (rows.size() < contents.size()) {
        rows.push_back(new WindowRow(service, true, parent));
        layout->addWidget(rows.back());
    }
    for (std::size_t index = 0; index < rows.size(); ++index) {
        rows[index]->setContent(contents[index]);
    }
}

WindowRow::WindowRow(ProviderService service, bool showsReset, QWidget* parent)
    : QWidget(parent)
    , label(makeLabel(QString(), TextStyle::headline, this))
    , badge(makeLabel(QString(), TextStyle::caption, this))
    , remaining(makeLabel(QString(), TextStyle::headline, this))
    , meter(new UsageMeter(service, 6, this))
    , clock(new SymbolLabel("clock", 12, this))
    , reset(makeLabel(QString(), TextStyle::caption, this))
    , used(makeLabel(QString(), TextStyle::caption, this))
    , hint(makeLabel(QString(), TextStyle::caption, this))
    , showsReset(showsReset) {
    setObjectName(QStringLiteral("window-row"));
    makeSecondary(badge);
    makeSecondary(reset);
    makeSecondary(used);
    makeSecondary(hint);
    makeSecondary(clock);
    hint->setWordWrap(true);
    hint->hide();
    label->setTextInteractionFlags(Qt::NoTextInteraction);

    auto* top = new QHBoxLayout;
    top->setSpacing(6);
    top->addWidget(label);
    top->addWidget(badge);
    top->addStretch();
    top->addWidget(remaining);

    auto* bottom = new QHBoxLayout;
    bottom->setSpacing(4);
    bottom->addWidget(clock);
    bottom->addWidget(reset);
    bottom->addStretch();
    bottom->addWidget(used);
    clock->setVisible(showsReset);
    reset->setVisible(showsReset);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 2, 0, 2);
    layout->setSpacing(3);
    layout->addLayout(top);
    layout->addWidget(meter);
    layout->addLayout(bottom);
    layout->addWidget(hint);
}

void WindowRow::setContent(const WindowRowContent& content) {
    label->setText(content.label);
    badge->setText(content.badge.value_or(QString()));
    badge->setVisible(content.badge.has_value());
    remaining->setText(content.remainingText);
    remaining->setToolTip(content.remainingText);
    meter->setFraction(content.usedFraction);
    reset->setText(content.resetText);
    reset->setToolTip(content.resetTooltip);
    clock->setToolTip(content.resetTooltip);
    used->setText(content.usedText);
    hint->setText(content.hint.value_or(QString()));
    hint->setVisible(content.hint.has_value());
    setAccessibleName(content.label);
    setAccessibleDescription(content.accessibleText);
    meter->setAccessibleName(content.accessibleText);
}

void WindowRow::setReduceMotion(bool reduce) {
    meter->setReduceMotion(reduce);
}

} // namespace gaugewell
