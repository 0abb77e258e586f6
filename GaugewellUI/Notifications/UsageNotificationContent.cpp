#include "UsageNotificationContent.h"

#include "GaugewellUI/Support/Localizable.h"
#include "UsageDomain/Uuid.h"
#include "UsagePresentation/UsagePercentage.h"

#include <QCoreApplication>
#include <QString>
#include <algorithm>
#include <cstdint>
#include <initializer_list>

namespace gaugewell {

namespace {

QString roundedPercentage(double fraction) {
    return QString::number(displayedPercentage(fraction).value_or(0));
}

} // namespace

std::string alertWindowName(const UsageWindowSample& window) {
    if (const auto& name = window.providerBucketName(); name && !name->empty()) {
        return Localizable::translated(*name).toStdString();
    }
    switch (window.windowKind()) {
    case UsageWindowKind::fiveHour:
        return Localizable::tr("Session").toStdString();
    case UsageWindowKind::sevenDay:
        return Localizable::tr("Weekly").toStdString();
    case UsageWindowKind::modelSpecific:
        if (const auto& model = window.modelID(); model && !model->empty()) {
            return *model;
        }
        return Localizable::tr("Model").toStdString();
    case UsageWindowKind::custom:
        return Localizable::tr("Custom").toStdString();
    case UsageWindowKind::unknown:
        break;
    }
    return Localizable::tr("Window").toStdString();
}

NotificationRequest usageNotificationRequest(const UsageAlertEvent& event) {
    const auto& sample = event.sample();
    const QString provider = QString::fromStdString(sample.providerName);
    const QString window = QString::fromStdString(sample.windowName);
    NotificationRequest request{"usage." + Uuid::random().text(), {}, {}};
    switch (event.kind()) {
    case UsageAlertEvent::Kind::threshold:
        request.title = formatted(Localizable::tr("%@ reached %d%%"),
                                  {provider, QString::number(event.percentage().value_or(0))})
                            .toStdString();
        request.body =
            formatted(Localizable::tr("%@ has %d%% used."), {window, roundedPercentage(sample.usedFraction)})
                .toStdString();
        break;
    case UsageAlertEvent::Kind::reset:
        request.title = formatted(Localizable::tr("%@ limit reset"), {provider}).toStdString();
        request.body = formatted(Localizable::tr("%@ is available again."), {window}).toStdString();
        break;
    }
    return request;
}

} // namespace gaugewell
