#include "DashboardPresenter.h"

#include "GaugewellUI/Support/Localizable.h"
#include "GaugewellUI/Views/DesignSystem/WindowTexts.h"
#include "UsagePresentation/RelativeTimeFormatter.h"

#include <QDateTime>
#include <QLocale>
#include <algorithm>
#include <set>

namespace gaugewell {

namespace {

QDate localDay(Date date) {
    return QDateTime::fromSecsSinceEpoch(
               std::chrono::duration_cast<std::chrono::seconds>(date.time_since_epoch()).count())
        .date();
}

std::vector<MetricContent> metrics(const ProviderViewState& provider,
                                   const std::vector<HistoryPoint>& history, Date now,
                                   const RelativeTimeFormatter& relativeTime) {
    std::vector<MetricContent> result;
    const auto windows = provider.currentWindows();
    std::optional<Date> nextReset;
    for (const auto& window : windows) {
        if (window.resetAt() && *window.resetAt() > now && (!nextReset || *window.resetAt() < *nextReset)) {
            nextReset = window.resetAt();
        }
    }
    result.push_back(
        {Localizable::tr("Next reset"),
         nextReset ? QString::fromStdString(relativeTime.format(*nextReset, now)) : QStringLiteral("\u2014"),
         std::nullopt});
    result.push_back({Localizable::tr("Windows"), QString::number(windows.size()), std::nullopt});
    std::int64_t week = 0;
    bool reported = false;
    for (const auto& point : history) {
        if (point.service == provider.service && now - point.date < std::chrono::hours(24 * 7)) {
            week += point.tokens;
            reported = true;
        }
    }
    if (reported) {
        result.push_back({Localizable::tr("Tokens, 7 days"), shortTokens(week), groupedTokens(week)});
    }
    return result;
}

} // namespace

QString groupedTokens(std::int64_t tokens) {
    return QLocale().toString(static_cast<qlonglong>(tokens));
}

QString shortTokens(std::int64_t tokens) {
    const QLocale locale;
    const double value = static_cast<double>(tokens);
    if (std::abs(value) >= 1e9) {
        return locale.toString(value / 1e9, 'f', value >= 1e10 ? 0 : 1) + QStringLiteral("B");
    }
    if (std::abs(value) >= 1e6) {
        return locale.toString(value / 1e6, 'f', value >= 1e7 ? 0 : 1) + QStringLiteral("M");
    }
    if (std::abs(value) >= 1e3) {
        return locale.toString(value / 1e3, 'f', value >= 1e4 ? 0 : 1) + QStringLiteral("K");
    }
    return locale.toString(static_cast<qlonglong>(tokens));
}

const UsageWindowSample* ringWindow(const std::vector<UsageWindowSample>& currentWindows) {
    const UsageWindowSample* chosen = nullptr;
    for (const auto& window : currentWindows) {
        if (!window.usedFraction()) {
            continue;
        }
        if (chosen == nullptr || *window.usedFraction() > *chosen->usedFraction()) {
            chosen = &window;
        }
    }
    if (chosen == nullptr && !currentWindows.empty()) {
        chosen = &currentWindows.front();
    }
    return chosen;
}

DashboardContent presentDashboard(const std::vector<ProviderViewState>& providers,
                                  const std::vector<HistoryPoint>& history, bool isRefreshing,
                                  std::optional<Date> lastUpdatedAt, Date now,
                                  const RelativeTimeFormatter& relativeTime) {
    DashboardContent content;
    content.statusLine = refreshStatusLine(isRefreshing, lastUpdatedAt, now, relativeTime, false);
    for (const auto& provider : providers) {
        DashboardCardContent card{provider.service,
                                  QString::fromStdString(provider.descriptor.displayName()),
                                  std::nullopt,
                                  {},
                                  {},
                                  std::nullopt,
                                  false};
        const auto windows = provider.currentWindows();
        if (const auto* ring = ringWindow(windows)) {
            card.ring = RingContent{ring->usedFraction() ? std::optional(ring->usedFraction()->toDouble())
                                                         : std::nullopt,
                                    WindowTexts::usedPercent(*ring), WindowTexts::label(*ring)};
        }
        for (const auto& window : windows) {
            card.rows.push_back(presentWindowRow(window, now, relativeTime));
            const auto used = WindowTexts::usedPercent(window);
            content.table.push_back({card.name, WindowTexts::label(window),
                                     WindowTexts::percentText(window, PercentageDisplayMode::consumed),
                                     WindowTexts::percentText(window, PercentageDisplayMode::remaining),
                                     WindowTexts::resetText(window, now, relativeTime),
                                     QString::fromStdString(window.source().displayName()) +
                                         (WindowTexts::freshnessBadge(window)
                                              ? QStringLiteral(" · ") + *WindowTexts::freshnessBadge(window)
                                              : QString()),
                                     used && *used >= 90,
                                     card.name + QStringLiteral(", ") +
                                         WindowTexts::accessibleDescription(window, now, relativeTime)});
        }
        if (windows.empty()) {
            card.offersConnect = needsSignIn(provider);
            card.unavailableMessage = unavailableMessage(provider);
        } else {
            card.metrics = metrics(provider, history, now, relativeTime);
        }
        content.cards.push_back(std::move(card));
    }

    std::set<QDate> days;
    for (const auto& point : history) {
        days.insert(localDay(point.date));
    }
    content.chart.days.assign(days.begin(), days.end());
    for (const auto service : allProviderServices) {
        std::vector<std::int64_t> tokens(content.chart.days.size(), 0);
        bool any = false;
        for (const auto& point : history) {
            if (point.service != service) {
                continue;
            }
            const auto day =
                std::lower_bound(content.chart.days.begin(), content.chart.days.end(), localDay(point.date));
            tokens[static_cast<std::size_t>(day - content.chart.days.begin())] += point.tokens;
            any = true;
        }
        if (any) {
            content.chart.largest =
                std::max(content.chart.largest, *std::max_element(tokens.begin(), tokens.end()));
            content.chart.series.emplace_back(service, std::move(tokens));
        }
    }
    return content;
}

} // namespace gaugewell
