#include "UsageNotificationContent.h"

#include "UsageDomain/Uuid.h"

#include <QCoreApplication>
#include <QString>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <initializer_list>

namespace gaugewell {

namespace {

QString localized(const std::string& text) {
    return QCoreApplication::translate("Localizable", text.c_str());
}

// Fills a string-table format in the platform convention: "%@" takes the next text, "%d" the next
// integer (already given as text), "%%" is a percent sign. A translation may not reorder arguments.
std::string formatted(const char* format, std::initializer_list<QString> arguments) {
    const QString pattern = QCoreApplication::translate("Localizable", format);
    auto next = arguments.begin();
    QString result;
    for (qsizetype index = 0; index < pattern.size(); ++index) {
        const QChar character = pattern.at(index);
        if (character != u'%' || index + 1 == pattern.size()) {
            result.append(character);
            continue;
        }
        const QChar specifier = pattern.at(index + 1);
        if (specifier == u'%') {
            result.append(u'%');
            ++index;
        } else if ((specifier == u'@' || specifier == u'd') && next != arguments.end()) {
            result.append(*next++);
            ++index;
        } else {
            result.append(character);
        }
    }
    return result.toStdString();
}

QString roundedPercentage(double fraction) {
    const double percentage = std::round(fraction * 100); // halves away from zero
    if (!std::isfinite(percentage)) {
        return QStringLiteral("0");
    }
    // Clamped to what an integer holds; an allowance never gets near.
    constexpr double limit = 2147483647.0;
    return QString::number(static_cast<std::int64_t>(std::clamp(percentage, -limit, limit)));
}

} // namespace

std::string alertWindowName(const UsageWindowSample& window) {
    if (const auto& name = window.providerBucketName(); name && !name->empty()) {
        return localized(*name).toStdString();
    }
    switch (window.windowKind()) {
    case UsageWindowKind::fiveHour:
        return localized("Session").toStdString();
    case UsageWindowKind::sevenDay:
        return localized("Weekly").toStdString();
    case UsageWindowKind::modelSpecific:
        if (const auto& model = window.modelID(); model && !model->empty()) {
            return *model;
        }
        return localized("Model").toStdString();
    case UsageWindowKind::custom:
        return localized("Custom").toStdString();
    case UsageWindowKind::unknown:
        break;
    }
    return localized("Window").toStdString();
}

NotificationRequest usageNotificationRequest(const UsageAlertEvent& event) {
    const auto& sample = event.sample();
    const QString provider = QString::fromStdString(sample.providerName);
    const QString window = QString::fromStdString(sample.windowName);
    NotificationRequest request{"usage." + Uuid::random().text(), {}, {}};
    switch (event.kind()) {
    case UsageAlertEvent::Kind::threshold:
        request.title =
            formatted("%@ reached %d%%", {provider, QString::number(event.percentage().value_or(0))});
        request.body = formatted("%@ has %d%% used.", {window, roundedPercentage(sample.usedFraction)});
        break;
    case UsageAlertEvent::Kind::reset:
        request.title = formatted("%@ limit reset", {provider});
        request.body = formatted("%@ is available again.", {window});
        break;
    }
    return request;
}

} // namespace gaugewell
