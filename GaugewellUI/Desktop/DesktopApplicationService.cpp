#include "DesktopApplicationService.h"

#include "DesktopApplicationAdaptor.h"

#include <QDBusConnectionInterface>

namespace gaugewell {

DesktopApplicationService::DesktopApplicationService(QDBusConnection bus, QObject* parent)
    : QObject(parent)
    , bus(std::move(bus)) {
    qRegisterMetaType<ApplicationRequest>("gaugewell::ApplicationRequest");
    new DesktopApplicationAdaptor(this);
}

DesktopApplicationService::~DesktopApplicationService() {
    if (registered) {
        bus.unregisterObject(objectPath);
        bus.unregisterService(busName);
    }
}

void DesktopApplicationService::rejectCurrentCall() {
    if (calledFromDBus()) {
        sendErrorReply(QDBusError::InvalidArgs, QStringLiteral("Unknown action or parameter"));
    }
}

DesktopApplicationService::Registration DesktopApplicationService::registerOnBus() {
    if (!bus.isConnected()) {
        return Registration::noSessionBus;
    }
    // The object first: a launcher that sees the name appear may call it at once.
    if (!bus.registerObject(objectPath, this, QDBusConnection::ExportAdaptors)) {
        return Registration::alreadyRunning;
    }
    const auto reply = bus.interface()->registerService(busName, QDBusConnectionInterface::DontQueueService,
                                                        QDBusConnectionInterface::DontAllowReplacement);
    if (!reply.isValid() || reply.value() != QDBusConnectionInterface::ServiceRegistered) {
        bus.unregisterObject(objectPath);
        return Registration::alreadyRunning;
    }
    registered = true;
    return Registration::primary;
}

} // namespace gaugewell
