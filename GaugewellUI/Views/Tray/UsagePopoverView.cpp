#include "UsagePopoverView.h"

#include "CompactProviderCard.h"
#include "GaugewellUI/Model/UsageAppModel.h"
#include "GaugewellUI/Support/Localizable.h"
#include "GaugewellUI/Views/DesignSystem/SymbolButton.h"
#include "GaugewellUI/Views/DesignSystem/SymbolLabel.h"
#include "GaugewellUI/Views/DesignSystem/Typography.h"
#include "Platform/SettingsKeys.h"
#include "PopoverPresenter.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

namespace gaugewell {

UsagePopoverView::UsagePopoverView(UsageAppModel& model, std::shared_ptr<UserDefaults> defaults,
                                   Actions actions, std::function<Date()> clock, QWidget* parent)
    : QWidget(parent)
    , model(model)
    , defaults(std::move(defaults))
    , actions(std::move(actions))
    , clock(std::move(clock))
    , timeline(this->clock) {
    setObjectName(QStringLiteral("popover"));
    setAccessibleName(QStringLiteral("Gaugewell"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(14, 14, 14, 12);
    layout->setSpacing(10);

    auto* header = new QHBoxLayout;
    auto* titles = new QVBoxLayout;
    titles->setSpacing(0);
    titles->addWidget(makeLabel(QStringLiteral("Gaugewell"), TextStyle::title, this));
    status = makeLabel(QString(), TextStyle::caption, this);
    status->setObjectName(QStringLiteral("status-line"));
    makeSecondary(status);
    titles->addWidget(status);
    header->addLayout(titles);
    header->addStretch();
    auto* refreshNow = new SymbolButton("arrow.clockwise", Localizable::tr("Refresh usage"), this);
    refreshNow->setObjectName(QStringLiteral("refresh"));
    connect(refreshNow, &QToolButton::clicked, this, [this] { this->model.refresh(RefreshTrigger::manual); });
    refreshButton = refreshNow;
    header->addWidget(refreshNow);
    layout->addLayout(header);

    auto* scroll = new QScrollArea(this);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* cardsHost = new QWidget(scroll);
    cardsHost->setAutoFillBackground(false);
    scroll->viewport()->setAutoFillBackground(false);
    cardsLayout = new QVBoxLayout(cardsHost);
    cardsLayout->setContentsMargins(0, 0, 0, 0);
    cardsLayout->setSpacing(10);
    for (const auto service : allProviderServices) {
        cards.push_back(new CompactProviderCard(model, service, cardsHost));
        cardsLayout->addWidget(cards.back());
        cards.back()->hide();
    }

    emptyState = new QWidget(cardsHost);
    emptyState->setObjectName(QStringLiteral("empty-state"));
    auto* empty = new QVBoxLayout(emptyState);
    empty->setSpacing(6);
    empty->addStretch();
    auto* eye = new SymbolLabel("eye.slash", 28, emptyState);
    makeSecondary(eye);
    empty->addWidget(eye, 0, Qt::AlignHCenter);
    empty->addWidget(makeLabel(Localizable::tr("No Providers Shown"), TextStyle::headline, emptyState), 0,
                     Qt::AlignHCenter);
    auto* hint = makeLabel(Localizable::tr("Enable a provider in Settings."), TextStyle::callout, emptyState);
    makeSecondary(hint);
    empty->addWidget(hint, 0, Qt::AlignHCenter);
    empty->addStretch();
    cardsLayout->addWidget(emptyState);
    cardsLayout->addStretch();
    scroll->setWidget(cardsHost);
    layout->addWidget(scroll, 1);

    auto* footer = new QHBoxLayout;
    footer->setSpacing(6);
    auto* dashboard = new QPushButton(Localizable::tr("Open Dashboard"), this);
    dashboard->setObjectName(QStringLiteral("open-dashboard"));
    dashboard->setAccessibleName(dashboard->text());
    dashboard->setDefault(true);
    auto* settings = new SymbolPushButton("gearshape", Localizable::tr("Settings"), this);
    settings->setObjectName(QStringLiteral("open-settings"));
    auto* quit = new SymbolPushButton("power", Localizable::tr("Quit Gaugewell"), this);
    quit->setObjectName(QStringLiteral("quit"));
    connect(dashboard, &QPushButton::clicked, this, [this] { this->actions.openDashboard(); });
    connect(settings, &QPushButton::clicked, this, [this] { this->actions.openSettings(); });
    connect(quit, &QPushButton::clicked, this, [this] { this->actions.quit(); });
    footer->addWidget(dashboard);
    footer->addWidget(settings);
    footer->addStretch();
    footer->addWidget(quit);
    layout->addLayout(footer);

    connect(&model, &UsageAppModel::providersChanged, this, &UsagePopoverView::refresh);
    connect(&model, &UsageAppModel::refreshingChanged, this, &UsagePopoverView::refresh);
    connect(&timeline, &CountdownTimeline::ticked, this, &UsagePopoverView::refresh);
    // Settings may change on any thread (a sign-in stores its flag from a worker).
    settingsSubscription = this->defaults->observe([this](const std::string&) {
        QMetaObject::invokeMethod(this, &UsagePopoverView::refresh, Qt::QueuedConnection);
    });
    refresh();
}

void UsagePopoverView::refresh() {
    const auto content = presentPopover({model.providers(), model.isRefreshing(), model.lastUpdatedAt(),
                                         defaults->storedBool(settingsKey::showCodex).value_or(true),
                                         defaults->storedBool(settingsKey::showClaude).value_or(true)},
                                        clock(), relativeTime);
    status->setText(content.statusLine);
    refreshButton->setEnabled(!model.isRefreshing());
    for (auto* card : cards) {
        const auto shown =
            std::find_if(content.cards.begin(), content.cards.end(),
                         [card](const auto& candidate) { return candidate.service == card->service(); });
        card->setVisible(shown != content.cards.end());
        if (shown != content.cards.end()) {
            card->setContent(*shown);
        }
    }
    emptyState->setVisible(content.showsEmptyState);
}

void UsagePopoverView::showEvent(QShowEvent* event) {
    timeline.setActive(true);
    refresh();
    QWidget::showEvent(event);
}

void UsagePopoverView::hideEvent(QHideEvent* event) {
    timeline.setActive(false);
    QWidget::hideEvent(event);
}

} // namespace gaugewell
