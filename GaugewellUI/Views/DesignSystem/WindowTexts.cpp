#include "WindowTexts.h"

#include "GaugewellUI/Support/Localizable.h"
#include "UsagePresentation/RelativeTimeFormatter.h"
#include "UsagePresentation/UsagePercentage.h"

#include <QDateTime>
#include <QLocale>
#include <chrono>

namespace gaugewell::WindowTexts {

namespace {

QDateTime localDateTime(Date date) {
    const auto milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(date.time_since_epoch()).count();
    return QDateTime::fromMSecsSinceEpoch(milliseconds);
}

QString percentString(std::int64_t percent) {
    return QString::fromStdString(percentageText(percent));
}

} // namespace

QString kindName(UsageWindowKind kind) {
    switch (kind) {
    case UsageWindowKind::fiveHour:
        return Localizable::tr("Session");
    case UsageWindowKind::sevenDay:
        return Localizable::tr("Weekly");
    case UsageWindowKind::modelSpecific:
        return Localizable::tr("Model");
    case UsageWindowKind::custom:
        return Localizable::tr("Custom");
    case UsageWindowKind::unknown:
        break;
    }
    return Localizable::tr("Window");
}

QString label(const UsageWindowSample& window) {
    const bool standard =
        window.windowKind() == UsageWindowKind::fiveHour || window.windowKind() == UsageWindowKind::sevenDay;
    if (!standard && window.providerBucketName() && !window.providerBucketName()->empty()) {
        return Localizable::translated(*window.providerBucketName());
    }
    return kindName(window.windowKind());
}

bool hasNotStarted(const UsageWindowSample& window) {
    return !window.resetAt() && window.usedFraction() && window.usedFraction()->isZero();
}

QString resetText(const UsageWindowSample& window, Date now, const RelativeTimeFormatter& relativeTime) {
    if (window.resetAt()) {
        return formatted(Localizable::tr("Resets %@"),
                         {QString::fromStdString(relativeTime.format(*window.resetAt(), now))});
    }
    return hasNotStarted(window) ? Localizable::tr("Not started") : Localizable::tr("Unknown");
}

QString notStartedHint() {
    return Localizable::tr("No active session yet — the window starts with your next request.");
}

QString thisWindowPhrase(const UsageWindowSample& window) {
    return formatted(Localizable::tr("this %@ window"), {label(window)});
}

QString periodTooltip(const UsageWindowSample& window) {
    if (!window.resetAt() || !window.durationSeconds() || *window.durationSeconds() <= 0) {
        return Localizable::tr("No reset time reported");
    }
    const QDateTime end = localDateTime(*window.resetAt());
    const QDateTime start = end.addSecs(-*window.durationSeconds());
    const QLocale locale;
    const QString endTime = locale.toString(end.time(), QLocale::ShortFormat);
    QString period;
    if (start.date() == end.date()) {
        period = locale.toString(start.time(), QLocale::ShortFormat) + QStringLiteral(" – ") + endTime;
    } else {
        const QString dateFormat = QStringLiteral("MMM d");
        period = locale.toString(start.date(), dateFormat) + QStringLiteral(", ") +
                 locale.toString(start.time(), QLocale::ShortFormat) + QStringLiteral(" – ") +
                 locale.toString(end.date(), dateFormat) + QStringLiteral(", ") + endTime;
    }
    return formatted(Localizable::tr("This window runs %@"), {period});
}

QString percentText(const UsageWindowSample& window, PercentageDisplayMode mode) {
    if (window.usedFraction()) {
        if (const auto percent = displayedPercentage(*window.usedFraction(), mode)) {
            return percentString(*percent);
        }
    }
    return QStringLiteral("\u2014");
}

std::optional<int> usedPercent(const UsageWindowSample& window) {
    if (!window.usedFraction()) {
        return std::nullopt;
    }
    const auto percent = displayedPercentage(*window.usedFraction(), PercentageDisplayMode::consumed);
    if (!percent || *percent < INT32_MIN || *percent > INT32_MAX) {
        return std::nullopt;
    }
    return static_cast<int>(*percent);
}

QString accessibleDescription(const UsageWindowSample& window, Date now,
                              const RelativeTimeFormatter& relativeTime) {
    const auto percent = usedPercent(window);
    return formatted(Localizable::tr("%@, %@ used, resets %@"),
                     {label(window), percent ? percentString(*percent) : Localizable::tr("no data"),
                      window.resetAt() ? QString::fromStdString(relativeTime.format(*window.resetAt(), now))
                                       : resetText(window, now, relativeTime)});
}

QString ringAccessibleValue(std::optional<int> percent, const QString& caption) {
    if (!percent) {
        return Localizable::tr("Usage unavailable");
    }
    return formatted(Localizable::tr("%d percent %@"), {QString::number(*percent), caption});
}

std::optional<QString> freshnessBadge(const UsageWindowSample& window) {
    if (window.authority() == MeasurementAuthority::vendorCached) {
        return Localizable::tr("CACHED");
    }
    switch (window.freshness()) {
    case MeasurementFreshness::live:
        return std::nullopt;
    case MeasurementFreshness::recent:
        return Localizable::tr("recent");
    case MeasurementFreshness::stale:
        return Localizable::tr("stale");
    case MeasurementFreshness::unknown:
        break;
    }
    return Localizable::tr("unknown");
}

} // namespace gaugewell::WindowTexts
