#include "DesktopApplicationAdaptor.h"

#include "DesktopApplicationService.h"

#include <QDBusVariant>
#include <QMetaObject>

namespace gaugewell {

namespace {

template <class Emit> void emitLater(QObject* context, Emit emitSignal) {
    QMetaObject::invokeMethod(context, std::move(emitSignal), Qt::QueuedConnection);
}

} // namespace

DesktopApplicationAdaptor::DesktopApplicationAdaptor(DesktopApplicationService* service)
    : QDBusAbstractAdaptor(service)
    , service(service) {}

void DesktopApplicationAdaptor::Activate(const QVariantMap&) {
    emitLater(service, [service = service] { emit service->activated(); });
}

void DesktopApplicationAdaptor::Open(const QStringList&, const QVariantMap&) {
    emitLater(service, [service = service] { emit service->activated(); });
}

void DesktopApplicationAdaptor::ActivateAction(const QString& name, const QVariantList& parameter,
                                               const QVariantMap&) {
    std::optional<std::string> text;
    if (parameter.size() == 1) {
        const QVariant value = parameter.front().canConvert<QDBusVariant>()
                                   ? parameter.front().value<QDBusVariant>().variant()
                                   : parameter.front();
        text = value.toString().toStdString();
    }
    // Launchers of a D-Bus activatable desktop file call its actions by their group names.
    const std::string action = name == QStringLiteral("Dashboard")  ? "dashboard"
                               : name == QStringLiteral("Settings") ? "settings"
                                                                    : name.toStdString();
    const auto request = parameter.size() > 1 ? std::nullopt : ApplicationRequest::parse(action, text);
    if (!request) {
        service->rejectCurrentCall();
        return;
    }
    emitLater(service, [service = service, request = *request] { emit service->requested(request); });
}

} // namespace gaugewell
