#pragma once

#include "GaugewellUI/Views/DesignSystem/CountdownTimeline.h"
#include "UsagePresentation/RelativeTimeFormatter.h"

#include <QWidget>
#include <functional>
#include <vector>

class QGridLayout;
class QLabel;

namespace gaugewell {

class ProviderDashboardCard;
class TokenActivityChart;
class UsageAppModel;
class WindowsTable;

// The dashboard: a header with the refresh state, a card per provider, the daily token chart and
// the table of every window. It follows the model and, while shown, the minute tick.
class DashboardView : public QWidget {
    Q_OBJECT

public:
    DashboardView(
        UsageAppModel& model, std::function<void()> onOpenSettings,
        std::function<Date()> clock = [] { return std::chrono::system_clock::now(); },
        QWidget* parent = nullptr);

    void refresh();

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    UsageAppModel& model;
    std::function<void()> onOpenSettings;
    std::function<Date()> clock;
    CountdownTimeline timeline;
    RelativeTimeFormatter relativeTime;
    QLabel* status;
    QWidget* refreshButton;
    QGridLayout* cardsLayout;
    std::vector<ProviderDashboardCard*> cards;
    TokenActivityChart* chart;
    WindowsTable* table;
};

// The window that hosts it, 980 × 720, made on first use and reused.
class DashboardWindow : public QWidget {
    Q_OBJECT

public:
    DashboardWindow(UsageAppModel& model, std::function<void()> onOpenSettings, QWidget* parent = nullptr);

    DashboardView& view() { return *content; }

private:
    DashboardView* content;
};

} // namespace gaugewell
