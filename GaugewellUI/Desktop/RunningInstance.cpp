#include "RunningInstance.h"

#include "DesktopApplicationService.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QEventLoop>
#include <QTimer>

namespace gaugewell {

std::string_view describe(RunningInstanceError error) {
    switch (error) {
    case RunningInstanceError::noSessionBus:
        return "no D-Bus session bus is available";
    case RunningInstanceError::notRunning:
        return "Gaugewell is not running";
    case RunningInstanceError::refused:
        return "the running Gaugewell refused the request";
    case RunningInstanceError::timedOut:
        return "the running Gaugewell did not answer in time";
    }
    return "";
}

Status<RunningInstanceError> askRunningInstance(const std::optional<ApplicationRequest>& request,
                                                QDBusConnection bus, std::chrono::milliseconds timeout) {
    if (!bus.isConnected()) {
        return unexpected(RunningInstanceError::noSessionBus);
    }
    // Asked first, so that a call never auto-starts an instance through a D-Bus service file.
    const auto owned = bus.interface()->isServiceRegistered(DesktopApplicationService::busName);
    if (!owned.isValid() || !owned.value()) {
        return unexpected(RunningInstanceError::notRunning);
    }

    QDBusMessage call;
    if (!request) {
        call = QDBusMessage::createMethodCall(
            DesktopApplicationService::busName, DesktopApplicationService::objectPath,
            DesktopApplicationService::interfaceName, QStringLiteral("Activate"));
        call << QVariantMap();
    } else {
        call = QDBusMessage::createMethodCall(
            DesktopApplicationService::busName, DesktopApplicationService::objectPath,
            DesktopApplicationService::interfaceName, QStringLiteral("ActivateAction"));
        QVariantList parameter;
        if (request->page) {
            parameter << QVariant::fromValue(QDBusVariant(QString::fromUtf8(rawValue(*request->page))));
        }
        call << QString::fromUtf8(rawValue(request->action)) << parameter << QVariantMap();
    }
    call.setAutoStartService(false);

    QDBusPendingCallWatcher watcher(bus.asyncCall(call, static_cast<int>(timeout.count())));
    QEventLoop loop;
    QTimer deadline;
    deadline.setSingleShot(true);
    QObject::connect(&watcher, &QDBusPendingCallWatcher::finished, &loop, &QEventLoop::quit);
    QObject::connect(&deadline, &QTimer::timeout, &loop, &QEventLoop::quit);
    deadline.start(timeout + std::chrono::milliseconds(100)); // the bus's own time-out ends it first
    if (!watcher.isFinished()) {
        loop.exec();
    }
    if (!watcher.isFinished()) {
        return unexpected(RunningInstanceError::timedOut);
    }
    const QDBusMessage reply = watcher.reply();
    if (reply.type() == QDBusMessage::ErrorMessage) {
        const QString name = reply.errorName();
        if (name == QStringLiteral("org.freedesktop.DBus.Error.NoReply") ||
            name == QStringLiteral("org.freedesktop.DBus.Error.Timeout")) {
            return unexpected(RunningInstanceError::timedOut);
        }
        if (name == QStringLiteral("org.freedesktop.DBus.Error.ServiceUnknown") ||
            name == QStringLiteral("org.freedesktop.DBus.Error.NameHasNoOwner")) {
            return unexpected(RunningInstanceError::notRunning);
        }
        return unexpected(RunningInstanceError::refused);
    }
    return {};
}

} // namespace gaugewell
