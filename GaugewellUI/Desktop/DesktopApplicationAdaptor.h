#pragma once

#include <QDBusAbstractAdaptor>
#include <QVariantList>
#include <QVariantMap>

namespace gaugewell {

class DesktopApplicationService;

// The org.freedesktop.Application interface as GApplication and KDE launchers call it. Requests
// are handed to the service as signals after the reply has gone out, so that a caller asking us
// to quit still gets one.
class DesktopApplicationAdaptor : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit DesktopApplicationAdaptor(DesktopApplicationService* service);

public slots:
    void Activate(const QVariantMap& platformData);
    // Gaugewell opens no documents; a launcher's "open" means the same as activating it.
    void Open(const QStringList& uris, const QVariantMap& platformData);
    void ActivateAction(const QString& name, const QVariantList& parameter, const QVariantMap& platformData);

private:
    DesktopApplicationService* service;
};

} // namespace gaugewell
