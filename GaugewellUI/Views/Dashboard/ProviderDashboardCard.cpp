#include "ProviderDashboardCard.h"

#include "GaugewellUI/Support/Localizable.h"
#include "GaugewellUI/Views/Connections/ProviderConnectionButton.h"
#include "GaugewellUI/Views/DesignSystem/MetricTile.h"
#include "GaugewellUI/Views/DesignSystem/ProviderMark.h"
#include "GaugewellUI/Views/DesignSystem/SymbolLabel.h"
#include "GaugewellUI/Views/DesignSystem/Typography.h"
#include "GaugewellUI/Views/DesignSystem/UsageRing.h"
#include "GaugewellUI/Views/Tray/WindowRow.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace gaugewell {

ProviderDashboardCard::ProviderDashboardCard(UsageAppModel& model, ProviderService service, QWidget* parent)
    : GlassSurface(parent, 14)
    , service_(service) {
    setObjectName(QStringLiteral("dashboard-card-%1").arg(QString::fromUtf8(rawValue(service))));
    setAccessibleName(QString::fromUtf8(displayName(service)));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 14, 16, 14);
    layout->setSpacing(10);
    auto* header = new QHBoxLayout;
    header->setSpacing(8);
    header->addWidget(new ProviderMark(service, 20, this));
    header->addWidget(makeLabel(QString::fromUtf8(displayName(service)), TextStyle::title, this));
    header->addStretch();
    layout->addLayout(header);

    usage = new QWidget(this);
    auto* usageLayout = new QHBoxLayout(usage);
    usageLayout->setContentsMargins(0, 0, 0, 0);
    usageLayout->setSpacing(16);
    ring = new UsageRing(service, 96, 10, usage);
    ring->setObjectName(QStringLiteral("usage-ring"));
    usageLayout->addWidget(ring, 0, Qt::AlignTop);
    rowsLayout = new QVBoxLayout;
    rowsLayout->setSpacing(8);
    usageLayout->addLayout(rowsLayout, 1);
    layout->addWidget(usage);
    // Tiles sit at the bottom, level with the other card's.
    layout->addStretch();
    tilesLayout = new QHBoxLayout;
    tilesLayout->setSpacing(8);
    layout->addLayout(tilesLayout);

    unavailable = new QWidget(this);
    auto* block = new QVBoxLayout(unavailable);
    block->setContentsMargins(0, 6, 0, 6);
    block->setSpacing(8);
    auto* title = new QHBoxLayout;
    title->addWidget(new SymbolLabel("person.crop.circle.badge.exclamationmark", 20, unavailable));
    unavailableMessage = makeLabel(QString(), TextStyle::body, unavailable);
    unavailableMessage->setWordWrap(true);
    title->addWidget(unavailableMessage, 1);
    block->addLayout(title);
    connectButton = new ProviderConnectionButton(model, service, true, unavailable);
    auto* buttonRow = new QHBoxLayout;
    buttonRow->addWidget(connectButton);
    buttonRow->addStretch();
    block->addLayout(buttonRow);
    layout->addWidget(unavailable);
}

void ProviderDashboardCard::setContent(const DashboardCardContent& content) {
    usage->setVisible(!content.rows.empty());
    if (content.ring) {
        ring->setValue(content.ring->fraction, content.ring->percent, content.ring->caption);
    }
    showWindowRows(rows, content.rows, service_, rowsLayout, usage);
    while (tiles.size() > content.metrics.size()) {
        delete tiles.back();
        tiles.pop_back();
    }
    for (std::size_t index = 0; index < content.metrics.size(); ++index) {
        if (index == tiles.size() || tiles[index]->accessibleName() != content.metrics[index].label) {
            if (index < tiles.size()) {
                delete tiles[index];
                tiles.erase(tiles.begin() + static_cast<std::ptrdiff_t>(index));
            }
            tiles.insert(tiles.begin() + static_cast<std::ptrdiff_t>(index),
                         new MetricTile(content.metrics[index].label, this));
            tilesLayout->insertWidget(static_cast<int>(index), tiles[index]);
        }
        tiles[index]->setValue(content.metrics[index].value, content.metrics[index].detail);
    }
    unavailable->setVisible(content.unavailableMessage.has_value());
    unavailableMessage->setText(content.unavailableMessage.value_or(QString()));
    connectButton->setVisible(content.offersConnect);
}

} // namespace gaugewell
