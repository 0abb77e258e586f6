#include "GaugewellUI/Model/DBusNotificationBackend.h"
#include "GaugewellUI/Model/UsageNotificationController.h"
#include "Platform/InMemoryUserDefaults.h"
#include "Platform/SettingsKeys.h"
#include "QtTestSupport.h"
#include "SpawnedProcess.h"
#include "ViewStateFixtures.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QDeadlineTimer>
#include <QTemporaryDir>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace gaugewell {
namespace {

using ::testing::ElementsAre;

const QString notificationsName = QStringLiteral("org.freedesktop.Notifications");

// One Notify call as the server received it.
struct ReceivedNotification {
    QString appName;
    quint32 replacesID;
    QString icon;
    QString title;
    QString body;
    QStringList actions;
    QVariantMap hints;
    qint32 expireTimeout;
};

bool nameOwned(const QDBusConnection& bus) {
    return bus.interface()->isServiceRegistered(notificationsName).value();
}

// Waits, event loop running, until the name is owned (or released); bounded.
bool waitForName(bool owned, int timeoutMilliseconds = 10'000) {
    auto bus = QDBusConnection::sessionBus();
    QDBusServiceWatcher watcher(notificationsName, bus, QDBusServiceWatcher::WatchForOwnerChange);
    QDeadlineTimer deadline(timeoutMilliseconds);
    while (nameOwned(bus) != owned && !deadline.hasExpired()) {
        testing::waitForSignal(&watcher, &QDBusServiceWatcher::serviceOwnerChanged,
                               static_cast<int>(std::max<qint64>(1, deadline.remainingTime())));
    }
    return nameOwned(bus) == owned;
}

// python3-dbusmock's notification daemon on the test session's private bus.
class MockNotificationServer {
public:
    explicit MockNotificationServer(const QString& capabilities = QString()) {
        std::vector<std::string> arguments{"/usr/bin/python3",
                                           "-m",
                                           "dbusmock",
                                           "--session",
                                           "-t",
                                           "notification_daemon",
                                           "-l",
                                           (log.path() + "/notify.log").toStdString()};
        if (!capabilities.isNull()) {
            arguments.insert(arguments.end(),
                             {"-p", "{\"capabilities\": \"" + capabilities.toStdString() + "\"}"});
        }
        process = testing::SpawnedProcess::start(arguments, {}, testing::SpawnedProcess::Output::discard);
        running = process != nullptr && waitForName(true);
    }
    ~MockNotificationServer() {
        process.reset(); // kills and reaps the mock
        EXPECT_TRUE(waitForName(false)) << "the mock notification server kept its name";
    }

    bool isRunning() const { return running; }

    QDBusMessage mockCall(const QString& method, const QVariantList& arguments) const {
        auto message = QDBusMessage::createMethodCall(notificationsName,
                                                      QStringLiteral("/org/freedesktop/Notifications"),
                                                      QStringLiteral("org.freedesktop.DBus.Mock"), method);
        message.setArguments(arguments);
        return QDBusConnection::sessionBus().call(message, QDBus::Block, 5000);
    }

    // The arguments of every call of `method` so far, oldest first.
    std::vector<QVariantList> methodCalls(const QString& method) const {
        const auto reply = mockCall(QStringLiteral("GetMethodCalls"), {method});
        std::vector<QVariantList> calls;
        if (reply.type() != QDBusMessage::ReplyMessage) {
            ADD_FAILURE() << "GetMethodCalls failed: " << reply.errorName().toStdString();
            return calls;
        }
        const auto list = reply.arguments().first().value<QDBusArgument>();
        list.beginArray();
        while (!list.atEnd()) {
            quint64 time = 0;
            QVariantList values;
            list.beginStructure();
            list >> time >> values;
            list.endStructure();
            calls.push_back(values);
        }
        list.endArray();
        return calls;
    }

    std::vector<ReceivedNotification> received() const {
        std::vector<ReceivedNotification> notifications;
        for (const auto& values : methodCalls(QStringLiteral("Notify"))) {
            if (values.size() != 8) {
                ADD_FAILURE() << "Notify had " << values.size() << " arguments";
                continue;
            }
            notifications.push_back({values[0].toString(), values[1].toUInt(), values[2].toString(),
                                     values[3].toString(), values[4].toString(), values[5].toStringList(),
                                     qdbus_cast<QVariantMap>(values[6].value<QDBusArgument>()),
                                     values[7].toInt()});
        }
        return notifications;
    }

private:
    QTemporaryDir log;
    std::unique_ptr<testing::SpawnedProcess> process;
    bool running = false;
};

template <class T> T resultOf(const QFuture<T>& future) {
    EXPECT_TRUE(testing::waitForFuture(future));
    return future.isFinished() && future.resultCount() > 0 ? future.result() : T();
}

std::vector<ProviderViewState> providers(const char* codexUsed, const char* claudeUsed) {
    using testing::windowSample;
    return {testing::viewState(ProviderService::codex, {windowSample({.used = codexUsed})}),
            testing::viewState(ProviderService::claude, {windowSample({.bucket = "seven_day_opus",
                                                                       .kind = UsageWindowKind::sevenDay,
                                                                       .used = claudeUsed,
                                                                       .name = "Opus & <Sonnet>"})})};
}

class DBusNotificationBackendTest : public ::testing::Test {
protected:
    void SetUp() override {
        testing::coreApplication();
        ASSERT_TRUE(QDBusConnection::sessionBus().isConnected()) << "run inside scripts/test-session.sh";
        ASSERT_FALSE(nameOwned(QDBusConnection::sessionBus())) << "a notification server is already running";
        defaults->set(settingsKey::notificationsEnabled, true);
        backend = std::make_shared<DBusNotificationBackend>();
    }

    std::shared_ptr<DBusNotificationBackend> backend;
    std::shared_ptr<InMemoryUserDefaults> defaults = std::make_shared<InMemoryUserDefaults>();
};

TEST_F(DBusNotificationBackendTest, ThresholdAlertsArriveWithTheirExactTexts) {
    MockNotificationServer server(QStringLiteral("body sound"));
    ASSERT_TRUE(server.isRunning()) << "python3-dbusmock did not start";
    UsageNotificationController controller(backend, defaults);
    ASSERT_TRUE(testing::waitForFuture(controller.refreshPermission()));
    ASSERT_EQ(controller.permission(), UsageNotificationPermission::allowed);
    EXPECT_EQ(server.methodCalls(QStringLiteral("GetCapabilities")).size(), 1u);
    EXPECT_EQ(backend->serverCapabilities(), QStringList({"body", "sound"}));

    ASSERT_TRUE(testing::waitForFuture(controller.process(providers("0.7", "0.2"))));
    ASSERT_TRUE(testing::waitForFuture(controller.process(providers("0.9", "0.5"))));

    const auto received = server.received();
    ASSERT_EQ(received.size(), 2u);
    std::vector<std::pair<QString, QString>> texts;
    for (const auto& notification : received) {
        texts.emplace_back(notification.title, notification.body);
        EXPECT_EQ(notification.appName, QStringLiteral("Gaugewell"));
        EXPECT_EQ(notification.replacesID, 0u);
        EXPECT_TRUE(notification.actions.isEmpty());
        EXPECT_EQ(notification.hints.value(QStringLiteral("sound-name")).toString(),
                  QStringLiteral("message-new-instant"));
        EXPECT_EQ(notification.expireTimeout, -1);
    }
    // Without "body-markup" the body goes out as plain text, ampersand and all.
    EXPECT_THAT(texts, ElementsAre(std::pair<QString, QString>("Codex reached 90%", "Session has 90% used."),
                                   std::pair<QString, QString>("Claude reached 50%",
                                                               "Opus & <Sonnet> has 50% used.")));
}

TEST_F(DBusNotificationBackendTest, MarkupIsEscapedAndOurIdentifierIsKeptApartFromTheServersID) {
    MockNotificationServer server; // the mock's default capabilities include body-markup
    ASSERT_TRUE(server.isRunning()) << "python3-dbusmock did not start";
    EXPECT_EQ(resultOf(backend->authorization()), NotificationAuthorization::notDetermined);
    EXPECT_EQ(resultOf(backend->requestAuthorization()), NotificationAuthorization::authorized);
    EXPECT_EQ(
        resultOf(backend->post({"usage.first", "Claude limit reset", "Opus & <Sonnet> is available again."})),
        std::nullopt);
    EXPECT_EQ(resultOf(backend->post({"usage.second", "t", "b"})), std::nullopt);
    const auto received = server.received();
    ASSERT_EQ(received.size(), 2u);
    EXPECT_EQ(received[0].title, QStringLiteral("Claude limit reset"));
    EXPECT_EQ(received[0].body, QStringLiteral("Opus &amp; &lt;Sonnet&gt; is available again."));
    EXPECT_EQ(backend->serverNotificationID("usage.first"), 1u);
    EXPECT_EQ(backend->serverNotificationID("usage.second"), 2u);
    EXPECT_EQ(backend->serverNotificationID("usage.unknown"), std::nullopt);
}

TEST_F(DBusNotificationBackendTest, RefusedNotifyDoesNotStopTheBatch) {
    MockNotificationServer server(QStringLiteral("body"));
    ASSERT_TRUE(server.isRunning()) << "python3-dbusmock did not start";
    const auto replaced = server.mockCall(
        QStringLiteral("AddMethod"),
        {notificationsName, QStringLiteral("Notify"), QStringLiteral("susssasa{sv}i"), QStringLiteral("u"),
         QStringLiteral("if args[3].startswith('Codex'):\n"
                        "    raise dbus.exceptions.DBusException('refused', name='org.example.Refused')\n"
                        "ret = 41")});
    ASSERT_EQ(replaced.type(), QDBusMessage::ReplyMessage) << replaced.errorMessage().toStdString();

    UsageNotificationController controller(backend, defaults);
    ASSERT_TRUE(testing::waitForFuture(controller.requestPermission()));
    ASSERT_TRUE(testing::waitForFuture(controller.process(providers("0.7", "0.7"))));
    ASSERT_TRUE(testing::waitForFuture(controller.process(providers("0.8", "0.8"))));
    const auto received = server.received();
    ASSERT_EQ(received.size(), 2u); // both were tried; the first was refused
    EXPECT_EQ(received[0].title, QStringLiteral("Codex reached 75%"));
    EXPECT_EQ(received[1].title, QStringLiteral("Claude reached 75%"));

    EXPECT_EQ(resultOf(backend->post({"usage.x", "Codex again", "b"})), NotificationPostError::rejected);
}

TEST_F(DBusNotificationBackendTest, WithoutAServerAllIsUnavailableUntilOneArrives) {
    EXPECT_EQ(resultOf(backend->authorization()), NotificationAuthorization::unavailable);
    EXPECT_EQ(resultOf(backend->requestAuthorization()), NotificationAuthorization::unavailable);
    EXPECT_EQ(resultOf(backend->post({"usage.A", "t", "b"})), NotificationPostError::unavailable);

    UsageNotificationController controller(backend, defaults);
    ASSERT_TRUE(testing::waitForFuture(controller.refreshPermission()));
    EXPECT_EQ(controller.permission(), UsageNotificationPermission::unavailable);
    EXPECT_TRUE(testing::waitForFuture(controller.process(providers("0.1", "0.1"))));
    EXPECT_TRUE(testing::waitForFuture(controller.process(providers("0.9", "0.9"))));

    MockNotificationServer server;
    ASSERT_TRUE(server.isRunning()) << "python3-dbusmock did not start";
    ASSERT_TRUE(testing::waitForFuture(controller.refreshPermission()));
    EXPECT_EQ(controller.permission(), UsageNotificationPermission::allowed);
}

TEST_F(DBusNotificationBackendTest, NoBusAtAllIsUnavailable) {
    const auto bus = QDBusConnection::connectToBus(QStringLiteral("unix:path=/nonexistent/gaugewell-bus"),
                                                   QStringLiteral("gaugewell-no-bus"));
    DBusNotificationBackend offline(bus);
    EXPECT_EQ(resultOf(offline.authorization()), NotificationAuthorization::unavailable);
    EXPECT_EQ(resultOf(offline.post({"usage.A", "t", "b"})), NotificationPostError::unavailable);
    QDBusConnection::disconnectFromBus(QStringLiteral("gaugewell-no-bus"));
}

} // namespace
} // namespace gaugewell
