#pragma once

#include "ApplicationAction.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QObject>
#include <QString>

namespace gaugewell {

// Makes the running Gaugewell the one instance on the session bus: it owns the name
// "app.gaugewell.Gaugewell" and answers org.freedesktop.Application at /app/gaugewell/Gaugewell,
// so that a second launch, `gaugewell show` and the desktop's own launchers reach it.
class DesktopApplicationService final : public QObject, protected QDBusContext {
    Q_OBJECT

public:
    static inline const QString busName = QStringLiteral("app.gaugewell.Gaugewell");
    static inline const QString objectPath = QStringLiteral("/app/gaugewell/Gaugewell");
    static inline const QString interfaceName = QStringLiteral("org.freedesktop.Application");

    enum class Registration {
        primary,        // we own the name: this process is the application
        alreadyRunning, // another process owns it
        noSessionBus,   // no bus at all: run, but nothing can reach us
    };

    explicit DesktopApplicationService(QDBusConnection bus = QDBusConnection::sessionBus(),
                                       QObject* parent = nullptr);
    ~DesktopApplicationService() override;

    Registration registerOnBus();

signals:
    // `Activate` and `Open`: the desktop's "open the application".
    void activated();
    void requested(gaugewell::ApplicationRequest request);

private:
    friend class DesktopApplicationAdaptor;
    // Qt hands the incoming call's context to the exported object, not to its adaptor.
    void rejectCurrentCall();

    QDBusConnection bus;
    bool registered = false;
};

} // namespace gaugewell
