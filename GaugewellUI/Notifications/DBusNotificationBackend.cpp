#include "DBusNotificationBackend.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QPromise>
#include <QVariantMap>
#include <memory>

namespace gaugewell {

namespace {

const QString notificationsService = QStringLiteral("org.freedesktop.Notifications");
const QString notificationsPath = QStringLiteral("/org/freedesktop/Notifications");
const QString busService = QStringLiteral("org.freedesktop.DBus");
const QString busPath = QStringLiteral("/org/freedesktop/DBus");

// The freedesktop sound-naming theme's sound for an incoming message: the closest match to the
// "default sound" of an alert. Servers without the "sound" capability ignore the hint.
const QString defaultSoundName = QStringLiteral("message-new-instant");

template <class T> std::shared_ptr<QPromise<T>> startedPromise() {
    auto promise = std::make_shared<QPromise<T>>();
    promise->start();
    return promise;
}

template <class T> void finish(QPromise<T>& promise, T value) {
    promise.addResult(std::move(value));
    promise.finish();
}

// With "body-markup" the body is parsed as a small HTML subset, so provider-supplied names must
// not be able to inject markup (or break the parse and lose the body).
QString escapedMarkup(const QString& text) {
    QString escaped;
    escaped.reserve(text.size());
    for (const QChar character : text) {
        switch (character.unicode()) {
        case u'&':
            escaped += QStringLiteral("&amp;");
            break;
        case u'<':
            escaped += QStringLiteral("&lt;");
            break;
        case u'>':
            escaped += QStringLiteral("&gt;");
            break;
        default:
            escaped += character;
        }
    }
    return escaped;
}

NotificationPostError postError(const QDBusMessage& reply) {
    const QString name = reply.errorName();
    if (name == QStringLiteral("org.freedesktop.DBus.Error.NoReply") ||
        name == QStringLiteral("org.freedesktop.DBus.Error.Timeout") ||
        name == QStringLiteral("org.freedesktop.DBus.Error.TimedOut")) {
        return NotificationPostError::timedOut;
    }
    if (name == QStringLiteral("org.freedesktop.DBus.Error.ServiceUnknown") ||
        name == QStringLiteral("org.freedesktop.DBus.Error.NameHasNoOwner") ||
        name == QStringLiteral("org.freedesktop.DBus.Error.Disconnected")) {
        return NotificationPostError::unavailable;
    }
    return NotificationPostError::rejected;
}

} // namespace

DBusNotificationBackend::DBusNotificationBackend(QDBusConnection connection, QObject* parent)
    : QObject(parent)
    , connection(std::move(connection))
    , serverWatcher(notificationsService, this->connection, QDBusServiceWatcher::WatchForOwnerChange) {
    // Another server may support other things.
    connect(&serverWatcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString&, const QString&) { capabilities.reset(); });
}

QFuture<NotificationAuthorization> DBusNotificationBackend::authorization() {
    auto promise = startedPromise<NotificationAuthorization>();
    whenServerPresence([this, promise](bool present) {
        if (!present) {
            finish(*promise, NotificationAuthorization::unavailable);
            return;
        }
        whenCapabilitiesKnown([this, promise] {
            finish(*promise, requested ? NotificationAuthorization::authorized
                                       : NotificationAuthorization::notDetermined);
        });
    });
    return promise->future();
}

QFuture<NotificationAuthorization> DBusNotificationBackend::requestAuthorization() {
    auto promise = startedPromise<NotificationAuthorization>();
    whenServerPresence([this, promise](bool present) {
        if (!present) {
            finish(*promise, NotificationAuthorization::unavailable);
            return;
        }
        requested = true;
        whenCapabilitiesKnown([promise] { finish(*promise, NotificationAuthorization::authorized); });
    });
    return promise->future();
}

QFuture<std::optional<NotificationPostError>> DBusNotificationBackend::post(NotificationRequest request) {
    auto promise = startedPromise<std::optional<NotificationPostError>>();
    whenCapabilitiesKnown([this, promise, request = std::move(request)] {
        QString body = QString::fromStdString(request.body);
        if (capabilities && capabilities->contains(QStringLiteral("body-markup"))) {
            body = escapedMarkup(body);
        }
        const QVariantMap hints{{QStringLiteral("sound-name"), defaultSoundName}};
        const QVariantList arguments{QStringLiteral("Gaugewell"),
                                     QVariant::fromValue(quint32(0)), // replaces no earlier notification
                                     QString(),                       // no icon of our own yet
                                     QString::fromStdString(request.title),
                                     body,
                                     QStringList(), // no actions
                                     hints,
                                     QVariant::fromValue(qint32(-1))}; // the server's default expiry
        call(notificationsService, notificationsPath, notificationsService, QStringLiteral("Notify"),
             arguments, [this, promise, identifier = request.identifier](const QDBusMessage& reply) {
                 if (reply.type() != QDBusMessage::ReplyMessage) {
                     finish(*promise, std::optional(postError(reply)));
                     return;
                 }
                 const auto values = reply.arguments();
                 if (!values.isEmpty() && values.first().canConvert<quint32>()) {
                     delivered.emplace_back(identifier, values.first().value<quint32>());
                     if (delivered.size() > rememberedNotifications) {
                         delivered.pop_front();
                     }
                 }
                 finish(*promise, std::optional<NotificationPostError>());
             });
    });
    return promise->future();
}

std::optional<quint32> DBusNotificationBackend::serverNotificationID(const std::string& identifier) const {
    for (const auto& [ours, theirs] : delivered) {
        if (ours == identifier) {
            return theirs;
        }
    }
    return std::nullopt;
}

void DBusNotificationBackend::whenServerPresence(std::function<void(bool present)> handler) {
    call(busService, busPath, busService, QStringLiteral("NameHasOwner"), {notificationsService},
         [this, handler](const QDBusMessage& reply) {
             if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty() &&
                 reply.arguments().first().toBool()) {
                 handler(true);
                 return;
             }
             // Many desktops start their notification server on the first call.
             call(busService, busPath, busService, QStringLiteral("ListActivatableNames"), {},
                  [handler](const QDBusMessage& names) {
                      handler(names.type() == QDBusMessage::ReplyMessage && !names.arguments().isEmpty() &&
                              names.arguments().first().toStringList().contains(notificationsService));
                  });
         });
}

void DBusNotificationBackend::whenCapabilitiesKnown(std::function<void()> handler) {
    if (capabilities) {
        handler();
        return;
    }
    call(notificationsService, notificationsPath, notificationsService, QStringLiteral("GetCapabilities"), {},
         [this, handler](const QDBusMessage& reply) {
             if (reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty()) {
                 capabilities = reply.arguments().first().toStringList();
             }
             // Unknown capabilities: post plain text and ask again next time.
             handler();
         });
}

void DBusNotificationBackend::call(const QString& service, const QString& path, const QString& interface,
                                   const QString& method, const QVariantList& arguments,
                                   std::function<void(const QDBusMessage& reply)> handler) {
    auto message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    const QDBusPendingCall pending = connection.isConnected()
                                         ? connection.asyncCall(message, callTimeoutMilliseconds)
                                         : QDBusPendingCall::fromError(message.createErrorReply(
                                               QDBusError::Disconnected, QStringLiteral("Not connected")));
    if (pending.isFinished()) {
        // Answered without a round trip (no bus, or a local error): still answer later, never inside
        // the caller's own stack.
        QMetaObject::invokeMethod(
            this, [reply = pending.reply(), handler = std::move(handler)] { handler(reply); },
            Qt::QueuedConnection);
        return;
    }
    auto* watcher = new QDBusPendingCallWatcher(pending, this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [watcher, handler = std::move(handler)](QDBusPendingCallWatcher*) {
                watcher->deleteLater();
                handler(watcher->reply());
            });
}

} // namespace gaugewell
