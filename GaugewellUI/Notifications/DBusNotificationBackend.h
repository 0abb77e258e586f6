#pragma once

#include "NotificationBackend.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QStringList>
#include <deque>
#include <functional>
#include <optional>
#include <utility>

namespace gaugewell {

// Desktop notifications through org.freedesktop.Notifications on the session bus. There is no
// consent to ask for: the service counts as authorized once asked while a server is there, and as
// unavailable whenever no server owns (or can be started for) the name. Lives on the thread that
// created it (the main thread); all bus calls are asynchronous with a deadline.
class DBusNotificationBackend final : public QObject, public NotificationBackend {
    Q_OBJECT

public:
    static constexpr int callTimeoutMilliseconds = 5000;
    static constexpr std::size_t rememberedNotifications = 64;

    explicit DBusNotificationBackend(QDBusConnection connection = QDBusConnection::sessionBus(),
                                     QObject* parent = nullptr);

    QFuture<NotificationAuthorization> authorization() override;
    QFuture<NotificationAuthorization> requestAuthorization() override;
    QFuture<std::optional<NotificationPostError>> post(NotificationRequest request) override;

    // The server's id for one of our recent notifications, by our identifier.
    std::optional<quint32> serverNotificationID(const std::string& identifier) const;
    // What the current server said it supports; absent until asked.
    const std::optional<QStringList>& serverCapabilities() const { return capabilities; }

private:
    void whenServerPresence(std::function<void(bool present)> handler);
    void whenCapabilitiesKnown(std::function<void()> handler);
    void call(const QString& service, const QString& path, const QString& interface, const QString& method,
              const QVariantList& arguments, std::function<void(const QDBusMessage& reply)> handler);

    QDBusConnection connection;
    QDBusServiceWatcher serverWatcher;
    bool requested = false;
    std::optional<QStringList> capabilities;
    std::deque<std::pair<std::string, quint32>> delivered;
};

} // namespace gaugewell
