#pragma once

#include "GaugewellUI/Model/ProviderViewState.h"
#include "GaugewellUI/Views/Tray/PopoverPresenter.h"

#include <QDate>
#include <QString>
#include <map>
#include <optional>
#include <vector>

namespace gaugewell {

class RelativeTimeFormatter;

struct MetricContent {
    QString label;
    QString value;
    std::optional<QString> detail;

    bool operator==(const MetricContent&) const = default;
};

struct RingContent {
    std::optional<double> fraction;
    std::optional<int> percent;
    QString caption;

    bool operator==(const RingContent&) const = default;
};

// One provider's dashboard card: a ring for its most used window, a meter per current window,
// and a few figures; or, without windows, why not.
struct DashboardCardContent {
    ProviderService service;
    QString name;
    std::optional<RingContent> ring;
    std::vector<WindowRowContent> rows;
    std::vector<MetricContent> metrics;
    std::optional<QString> unavailableMessage;
    bool offersConnect = false;

    bool operator==(const DashboardCardContent&) const = default;
};

// A row of "All Windows".
struct WindowTableRow {
    QString provider;
    QString window;
    QString consumed;
    QString remaining;
    QString reset;
    QString source;
    // Shown beside the consumed share from 90 % used: the window is about to run out.
    bool warning = false;
    QString accessibleText;

    bool operator==(const WindowTableRow&) const = default;
};

// The token chart's data: one bar per day and provider, side by side.
struct TokenChartContent {
    std::vector<QDate> days;
    // Per provider, in service order, the tokens of each day in `days` (0 where it reported none).
    std::vector<std::pair<ProviderService, std::vector<std::int64_t>>> series;
    std::int64_t largest = 0;

    bool isEmpty() const { return days.empty(); }
};

struct DashboardContent {
    QString statusLine;
    std::vector<DashboardCardContent> cards;
    TokenChartContent chart;
    std::vector<WindowTableRow> table;
};

DashboardContent presentDashboard(const std::vector<ProviderViewState>& providers,
                                  const std::vector<HistoryPoint>& history, bool isRefreshing,
                                  std::optional<Date> lastUpdatedAt, Date now,
                                  const RelativeTimeFormatter& relativeTime);

// The window a card's ring shows: the current window closest to its limit (the first on a tie);
// without any known share, the first window.
const UsageWindowSample* ringWindow(const std::vector<UsageWindowSample>& currentWindows);

// "1,234,567" in the user's locale, and the short form "1.2M", "350K", "980" for the axis.
QString groupedTokens(std::int64_t tokens);
QString shortTokens(std::int64_t tokens);

} // namespace gaugewell
