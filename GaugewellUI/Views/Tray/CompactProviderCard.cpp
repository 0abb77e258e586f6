#include "CompactProviderCard.h"

#include "GaugewellUI/Support/Localizable.h"
#include "GaugewellUI/Views/Connections/ProviderConnectionButton.h"
#include "GaugewellUI/Views/DesignSystem/ProviderMark.h"
#include "GaugewellUI/Views/DesignSystem/SymbolLabel.h"
#include "GaugewellUI/Views/DesignSystem/Typography.h"
#include "WindowRow.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace gaugewell {

CompactProviderCard::CompactProviderCard(UsageAppModel& model, ProviderService service, QWidget* parent)
    : GlassSurface(parent)
    , service_(service) {
    setObjectName(QStringLiteral("card-%1").arg(QString::fromUtf8(rawValue(service))));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(12, 10, 12, 10);
    layout->setSpacing(6);

    auto* header = new QHBoxLayout;
    header->setSpacing(8);
    header->addWidget(new ProviderMark(service, 18, this));
    auto* name = makeLabel(QString::fromUtf8(displayName(service)), TextStyle::headline, this);
    header->addWidget(name);
    header->addStretch();
    layout->addLayout(header);

    // Column captions over the rows: the window's name on the left, what remains on the right.
    columns = new QWidget(this);
    auto* captions = new QHBoxLayout(columns);
    captions->setContentsMargins(0, 0, 0, 0);
    auto* windowCaption = makeLabel(Localizable::tr("Window").toUpper(), TextStyle::caption, columns);
    auto* remainingCaption = makeLabel(Localizable::tr("Remaining").toUpper(), TextStyle::caption, columns);
    makeSecondary(windowCaption);
    makeSecondary(remainingCaption);
    captions->addWidget(windowCaption);
    captions->addStretch();
    captions->addWidget(remainingCaption);
    layout->addWidget(columns);

    rowsLayout = new QVBoxLayout;
    rowsLayout->setSpacing(8);
    layout->addLayout(rowsLayout);

    unavailable = new QWidget(this);
    auto* block = new QVBoxLayout(unavailable);
    block->setContentsMargins(0, 0, 0, 0);
    block->setSpacing(6);
    auto* title = new QHBoxLayout;
    title->setSpacing(6);
    title->addWidget(new SymbolLabel("person.crop.circle.badge.exclamationmark", 16, unavailable));
    title->addWidget(makeLabel(Localizable::tr("Usage Unavailable"), TextStyle::callout, unavailable));
    title->addStretch();
    block->addLayout(title);
    unavailableMessage = makeLabel(QString(), TextStyle::callout, unavailable);
    unavailableMessage->setWordWrap(true);
    makeSecondary(unavailableMessage);
    block->addWidget(unavailableMessage);
    connectButton = new ProviderConnectionButton(model, service, true, unavailable);
    auto* buttonRow = new QHBoxLayout;
    buttonRow->addWidget(connectButton);
    buttonRow->addStretch();
    block->addLayout(buttonRow);
    layout->addWidget(unavailable);
    unavailable->hide();
    setAccessibleName(QString::fromUtf8(displayName(service)));
}

void CompactProviderCard::setContent(const ProviderCardContent& content) {
    showWindowRows(rows, content.rows, service_, rowsLayout, this);
    columns->setVisible(!content.rows.empty());
    unavailable->setVisible(content.unavailableMessage.has_value());
    unavailableMessage->setText(content.unavailableMessage.value_or(QString()));
    connectButton->setVisible(content.offersConnect);
}

} // namespace gaugewell
