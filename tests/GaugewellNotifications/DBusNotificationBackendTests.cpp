#include "GaugewellUI/Notifications/DBusNotificationBackend.h"
#include "GaugewellUI/Notifications/UsageNotificationController.h"
#include "Platform/InMemoryUserDefaults.h"
#include "Platform/SettingsKeys.h"
#include "ProviderKit/Process/ChildProcess.h"
#include "QtTestSupport.h"
#include "ViewStateFixtures.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QDeadlineTimer>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace gaugewell {
namespace {

const QString notificationsName = QStringLiteral("org.freedesktop.Notifications");

// The positions of Notify's arguments.
namespace notify {
enum Argument { appName, replacesID, icon, title, body, actions, hints, expireTimeout };
} // namespace notify

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
        const auto logFile = (log.path() + "/notify.log").toStdString();
        std::vector<std::string> arguments{"/usr/bin/python3",    "-m", "dbusmock", "--session", "-t",
                                           "notification_daemon", "-l", logFile};
        if (!capabilities.isNull()) {
            arguments.insert(arguments.end(),
                             {"-p", "{\"capabilities\": \"" + capabilities.toStdString() + "\"}"});
        }
        auto started = ChildProcess::spawn(
            arguments.front(), {arguments.begin() + 1, arguments.end()}, currentProcessEnvironment(),
            {ChildProcess::Stream::null, ChildProcess::Stream::null, ChildProcess::Stream::null});
        if (started) {
            process = std::move(started).value();
        }
        running = process.has_value() && waitForName(true);
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

private:
    QTemporaryDir log;
    std::optional<ChildProcess> process;
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

TEST_F(DBusNotificationBackendTest, AlertsArriveAsPlainTextAndARefusedOneDoesNotStopTheBatch) {
    MockNotificationServer server(QStringLiteral("body sound"));
    ASSERT_TRUE(server.isRunning()) << "python3-dbusmock did not start";
    const auto replaced = server.mockCall(
        QStringLiteral("AddMethod"),
        {notificationsName, QStringLiteral("Notify"), QStringLiteral("susssasa{sv}i"), QStringLiteral("u"),
         QStringLiteral("if args[3].startswith('Codex'):\n"
                        "    raise dbus.exceptions.DBusException('refused', name='org.example.Refused')\n"
                        "ret = 41")});
    ASSERT_EQ(replaced.type(), QDBusMessage::ReplyMessage) << replaced.errorMessage().toStdString();

    UsageNotificationController controller(backend, defaults);
    ASSERT_TRUE(testing::waitForFuture(controller.refreshPermission()));
    ASSERT_EQ(controller.permission(), UsageNotificationPermission::allowed);
    ASSERT_TRUE(testing::waitForFuture(controller.process(providers("0.7", "0.2"))));
    ASSERT_TRUE(testing::waitForFuture(controller.process(providers("0.9", "0.5"))));
    EXPECT_EQ(server.methodCalls(QStringLiteral("GetCapabilities")).size(), 1u);
    EXPECT_EQ(backend->serverCapabilities(), QStringList({"body", "sound"}));

    const auto received = server.methodCalls(QStringLiteral("Notify"));
    ASSERT_EQ(received.size(), 2u); // both were tried; the first was refused
    EXPECT_EQ(received[0].value(notify::title).toString(), QStringLiteral("Codex reached 90%"));
    const auto& claude = received[1];
    EXPECT_EQ(claude.value(notify::appName).toString(), QStringLiteral("Gaugewell"));
    EXPECT_EQ(claude.value(notify::replacesID).toUInt(), 0u);
    EXPECT_TRUE(claude.value(notify::actions).toStringList().isEmpty());
    EXPECT_EQ(qdbus_cast<QVariantMap>(claude.value(notify::hints).value<QDBusArgument>())
                  .value(QStringLiteral("sound-name"))
                  .toString(),
              QStringLiteral("message-new-instant"));
    EXPECT_EQ(claude.value(notify::expireTimeout).toInt(), -1);
    // Without "body-markup" the body goes out as plain text, ampersand and all.
    EXPECT_EQ(claude.value(notify::title).toString(), QStringLiteral("Claude reached 50%"));
    EXPECT_EQ(claude.value(notify::body).toString(), QStringLiteral("Opus & <Sonnet> has 50% used."));

    EXPECT_EQ(resultOf(backend->post({"usage.x", "Codex again", "b"})), NotificationPostError::rejected);
}

TEST_F(DBusNotificationBackendTest, UnavailableWithoutABusOrAServerThenMarkupIsEscapedOnceOneArrives) {
    const auto bus = QDBusConnection::connectToBus(QStringLiteral("unix:path=/nonexistent/gaugewell-bus"),
                                                   QStringLiteral("gaugewell-no-bus"));
    DBusNotificationBackend offline(bus);
    for (auto* each : {backend.get(), &offline}) {
        EXPECT_EQ(resultOf(each->authorization()), NotificationAuthorization::unavailable);
        EXPECT_EQ(resultOf(each->requestAuthorization()), NotificationAuthorization::unavailable);
        EXPECT_EQ(resultOf(each->post({"usage.A", "t", "b"})), NotificationPostError::unavailable);
    }
    QDBusConnection::disconnectFromBus(QStringLiteral("gaugewell-no-bus"));

    MockNotificationServer server; // the mock's default capabilities include body-markup
    ASSERT_TRUE(server.isRunning()) << "python3-dbusmock did not start";
    EXPECT_EQ(resultOf(backend->authorization()), NotificationAuthorization::notDetermined);
    EXPECT_EQ(resultOf(backend->requestAuthorization()), NotificationAuthorization::authorized);
    EXPECT_EQ(
        resultOf(backend->post({"usage.first", "Claude limit reset", "Opus & <Sonnet> is available again."})),
        std::nullopt);
    EXPECT_EQ(resultOf(backend->post({"usage.second", "t", "b"})), std::nullopt);
    const auto received = server.methodCalls(QStringLiteral("Notify"));
    ASSERT_EQ(received.size(), 2u);
    EXPECT_EQ(received[0].value(notify::title).toString(), QStringLiteral("Claude limit reset"));
    EXPECT_EQ(received[0].value(notify::body).toString(),
              QStringLiteral("Opus &amp; &lt;Sonnet&gt; is available again."));
    // Our identifier is kept apart from the server's.
    EXPECT_EQ(backend->serverNotificationID("usage.first"), 1u);
    EXPECT_EQ(backend->serverNotificationID("usage.second"), 2u);
    EXPECT_EQ(backend->serverNotificationID("usage.unknown"), std::nullopt);
}

// What a server can show is asked again when another takes its name: markup only where it is understood.
TEST_F(DBusNotificationBackendTest, AReplacedServerIsAskedForItsCapabilitiesAgain) {
    const auto bodyOfOnlyNotify = [](const MockNotificationServer& server) {
        const auto calls = server.methodCalls(QStringLiteral("Notify"));
        return calls.size() == 1 ? calls[0].value(notify::body).toString() : QString();
    };
    {
        MockNotificationServer plain(QStringLiteral("body"));
        ASSERT_TRUE(plain.isRunning()) << "python3-dbusmock did not start";
        EXPECT_EQ(resultOf(backend->requestAuthorization()), NotificationAuthorization::authorized);
        EXPECT_EQ(resultOf(backend->post({"usage.a", "t", "a & b"})), std::nullopt);
        EXPECT_EQ(bodyOfOnlyNotify(plain), QStringLiteral("a & b"));
    }
    MockNotificationServer marked;
    ASSERT_TRUE(marked.isRunning()) << "python3-dbusmock did not start";
    EXPECT_EQ(resultOf(backend->post({"usage.b", "t", "a & b"})), std::nullopt);
    EXPECT_EQ(bodyOfOnlyNotify(marked), QStringLiteral("a &amp; b"));
}

} // namespace
} // namespace gaugewell
