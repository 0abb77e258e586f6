#include "DashboardView.h"

#include "DashboardPresenter.h"
#include "GaugewellUI/Model/UsageAppModel.h"
#include "GaugewellUI/Support/Localizable.h"
#include "GaugewellUI/Views/DesignSystem/GlassSurface.h"
#include "GaugewellUI/Views/DesignSystem/SectionHeader.h"
#include "GaugewellUI/Views/DesignSystem/SymbolButton.h"
#include "GaugewellUI/Views/DesignSystem/Typography.h"
#include "ProviderDashboardCard.h"
#include "TokenActivityChart.h"
#include "WindowsTable.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QScrollArea>
#include <QVBoxLayout>

namespace gaugewell {

DashboardView::DashboardView(UsageAppModel& model, std::function<void()> onOpenSettings,
                             std::function<Date()> clock, QWidget* parent)
    : QWidget(parent)
    , model(model)
    , onOpenSettings(std::move(onOpenSettings))
    , clock(std::move(clock))
    , timeline(this->clock) {
    setObjectName(QStringLiteral("dashboard"));
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    auto* scroll = new QScrollArea(this);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->viewport()->setAutoFillBackground(false);
    auto* body = new QWidget(scroll);
    body->setAutoFillBackground(false);
    auto* layout = new QVBoxLayout(body);
    layout->setContentsMargins(28, 22, 28, 24);
    layout->setSpacing(14);

    auto* header = new QHBoxLayout;
    auto* titles = new QVBoxLayout;
    titles->setSpacing(2);
    titles->addWidget(makeLabel(Localizable::tr("Usage Overview"), TextStyle::largeTitle, body));
    auto* subtitle = makeLabel(
        Localizable::tr("Subscription allowance and local token activity, with source scope kept explicit."),
        TextStyle::body, body);
    makeSecondary(subtitle);
    titles->addWidget(subtitle);
    header->addLayout(titles, 1);
    status = makeLabel(QString(), TextStyle::callout, body);
    status->setObjectName(QStringLiteral("status-line"));
    makeSecondary(status);
    header->addWidget(status, 0, Qt::AlignVCenter);
    auto* refreshNow = new SymbolButton("arrow.clockwise", Localizable::tr("Refresh usage"), body);
    refreshNow->setObjectName(QStringLiteral("refresh"));
    connect(refreshNow, &QToolButton::clicked, this, [this] { this->model.refresh(RefreshTrigger::manual); });
    refreshButton = refreshNow;
    header->addWidget(refreshNow, 0, Qt::AlignVCenter);
    auto* settings = new SymbolButton("gearshape", Localizable::tr("Open settings"), body);
    settings->setObjectName(QStringLiteral("open-settings"));
    connect(settings, &QToolButton::clicked, this, [this] { this->onOpenSettings(); });
    header->addWidget(settings, 0, Qt::AlignVCenter);
    layout->addLayout(header);

    cardsLayout = new QGridLayout;
    cardsLayout->setSpacing(14);
    layout->addLayout(cardsLayout);

    layout->addSpacing(6);
    layout->addWidget(new SectionHeader(Localizable::tr("Token Activity"),
                                        Localizable::tr("Daily totals reported by each available source"),
                                        body));
    auto* chartPanel = new GlassSurface(body, 14);
    auto* chartLayout = new QVBoxLayout(chartPanel);
    chartLayout->setContentsMargins(10, 10, 10, 10);
    chart = new TokenActivityChart(chartPanel);
    chartLayout->addWidget(chart);
    layout->addWidget(chartPanel);
    auto* scope =
        makeLabel(Localizable::tr("Codex history is account-scoped when supplied by app-server. Claude "
                                  "aggregate history is device-scoped and is not a subscription percentage."),
                  TextStyle::caption, body);
    scope->setWordWrap(true);
    makeSecondary(scope);
    layout->addWidget(scope);

    layout->addSpacing(6);
    layout->addWidget(new SectionHeader(
        Localizable::tr("All Windows"),
        Localizable::tr("Every cap each provider currently reports, newest observation"), body));
    auto* tablePanel = new GlassSurface(body, 14);
    auto* tableLayout = new QVBoxLayout(tablePanel);
    tableLayout->setContentsMargins(10, 8, 10, 8);
    table = new WindowsTable(tablePanel);
    tableLayout->addWidget(table);
    layout->addWidget(tablePanel);
    layout->addStretch();
    scroll->setWidget(body);
    outer->addWidget(scroll);

    connect(&model, &UsageAppModel::providersChanged, this, &DashboardView::refresh);
    connect(&model, &UsageAppModel::refreshingChanged, this, &DashboardView::refresh);
    connect(&timeline, &CountdownTimeline::ticked, this, &DashboardView::refresh);
    refresh();
}

void DashboardView::refresh() {
    const auto content = presentDashboard(model.providers(), model.historyPoints(), model.isRefreshing(),
                                          model.lastUpdatedAt(), clock(), relativeTime);
    status->setText(content.statusLine);
    refreshButton->setEnabled(!model.isRefreshing());
    for (std::size_t index = 0; index < content.cards.size(); ++index) {
        const auto& card = content.cards[index];
        auto found = std::find_if(cards.begin(), cards.end(),
                                  [&](auto* existing) { return existing->service() == card.service; });
        if (found == cards.end()) {
            cards.push_back(new ProviderDashboardCard(model, card.service, this));
            found = cards.end() - 1;
        }
        // Two cards side by side, in model order.
        cardsLayout->addWidget(*found, 0, static_cast<int>(index));
        (*found)->setContent(card);
        (*found)->show();
    }
    for (auto* card : cards) {
        const bool present =
            std::any_of(content.cards.begin(), content.cards.end(),
                        [card](const auto& candidate) { return candidate.service == card->service(); });
        card->setVisible(present);
    }
    chart->setContent(content.chart);
    table->setRows(content.table);
}

void DashboardView::showEvent(QShowEvent* event) {
    model.start();
    timeline.setActive(true);
    refresh();
    QWidget::showEvent(event);
}

void DashboardView::hideEvent(QHideEvent* event) {
    timeline.setActive(false);
    QWidget::hideEvent(event);
}

DashboardWindow::DashboardWindow(UsageAppModel& model, std::function<void()> onOpenSettings, QWidget* parent)
    : QWidget(parent, Qt::Window)
    , content(new DashboardView(
          model, std::move(onOpenSettings), [] { return std::chrono::system_clock::now(); }, this)) {
    setObjectName(QStringLiteral("dashboard-window"));
    setWindowTitle(QStringLiteral("Gaugewell"));
    resize(980, 720);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(content);
}

} // namespace gaugewell
