#include "../GaugewellWidgetSupport/WidgetFeedSamples.h"
#include "GaugewellUI/WidgetFeed/WidgetLiveServer.h"
#include "GaugewellWidgetSupport/WidgetUsageLoader.h"
#include "WidgetFeedTestSupport.h"

#include <QProcess>
#include <QSocketNotifier>
#include <QTest>
#include <atomic>
#include <condition_variable>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>
#include <sys/resource.h>

namespace gaugewell {
namespace {

using namespace std::chrono_literals;
using testing::exchange;
using testing::sampleWidgetSnapshot;
using testing::whileServing;

const std::string notFound = testing::widgetFeedResponse("404 Not Found", "");
const std::string serverError = testing::widgetFeedResponse("500 Internal Server Error", "");
const std::string served = testing::widgetFeedResponse("200 OK", testing::sampleWidgetJson);
const std::string getRequest = "GET /widget/v1 HTTP/1.1\r\nHost: 127.0.0.1\r\nAccept: */*\r\n\r\n";

class WidgetLiveServerTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        testing::coreApplication();
        std::signal(SIGPIPE, SIG_IGN);
    }

    void SetUp() override {
        port = testing::unusedLoopbackPort();
        ASSERT_NE(port, 0);
        qputenv("GAUGEWELL_WIDGET_PORT", QByteArray::number(port));
    }
    void TearDown() override { qunsetenv("GAUGEWELL_WIDGET_PORT"); }

    // Answers at once with the sample snapshot and counts the requests that reached it.
    WidgetLiveServer::SnapshotSource instantSource() {
        return [this](WidgetLiveServer::SnapshotReply reply) {
            ++snapshotRequests;
            reply(sampleWidgetSnapshot());
        };
    }
    // Keeps the replies for the test to give later.
    WidgetLiveServer::SnapshotSource deferredSource() {
        return [this](WidgetLiveServer::SnapshotReply reply) { pending.push_back(std::move(reply)); };
    }

    std::unique_ptr<WidgetLiveServer> startedServer(WidgetLiveServer::SnapshotSource source,
                                                    std::chrono::milliseconds idleTimeout = 5s,
                                                    std::size_t maximumConnections = 64) {
        auto options = WidgetLiveServerOptions::fromEnvironment();
        options.idleTimeout = idleTimeout;
        options.maximumConnections = maximumConnections;
        auto server = std::make_unique<WidgetLiveServer>(std::move(source), options);
        server->start();
        EXPECT_TRUE(server->isListening());
        EXPECT_EQ(server->port(), port);
        return server;
    }

    testing::RawExchange rawExchange(const std::string& request, std::chrono::milliseconds deadline = 10s,
                                     bool halfClose = false) {
        auto result = whileServing([&] { return exchange(port, request, deadline, halfClose); });
        EXPECT_TRUE(result.has_value());
        return result.value_or(testing::RawExchange{});
    }

    // Real curl as a child process; stdout holds the response head and body as received.
    std::optional<QByteArray> curl(const QStringList& extraArguments) {
        QProcess process;
        QStringList arguments{"--silent", "--include", "--max-time", "10", "--noproxy", "*"};
        arguments << extraArguments;
        process.start("curl", arguments);
        if (!QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, 15000) ||
            process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
            process.kill();
            process.waitForFinished(1000);
            return std::nullopt;
        }
        return process.readAllStandardOutput();
    }

    QString url(const QString& suffix = {}) const {
        return QString("http://127.0.0.1:%1/widget/v1%2").arg(port).arg(suffix);
    }

    std::uint16_t port = 0;
    int snapshotRequests = 0;
    std::vector<WidgetLiveServer::SnapshotReply> pending;
};

TEST_F(WidgetLiveServerTest, CurlGetsTheExactResponseAndTheWidgetLoaderDecodesIt) {
    const auto server = startedServer(instantSource());
    // 127.0.0.1 only: nothing on another address, even another loopback one, may read the user's usage.
    const int elsewhere = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in other{};
    other.sin_family = AF_INET;
    other.sin_port = htons(port);
    other.sin_addr.s_addr = htonl(0x7f000002);
    EXPECT_NE(::connect(elsewhere, reinterpret_cast<sockaddr*>(&other), sizeof other), 0);
    ::close(elsewhere);
    const auto response = curl({url()});
    ASSERT_TRUE(response.has_value());
    EXPECT_EQ(response->toStdString(), served);
    const auto fetched =
        whileServing([] { return fetchWidgetUsageSnapshot(*WidgetFeedEndpoint::fromEnvironment()); });
    ASSERT_TRUE(fetched.has_value());
    ASSERT_TRUE(fetched->hasValue());
    EXPECT_EQ(fetched->value(), sampleWidgetSnapshot());
    EXPECT_EQ(snapshotRequests, 2);
}

// Each request is the whole first chunk the server sees; only the first request is read.
TEST_F(WidgetLiveServerTest, RawRequestsGetExactlyOneAnswerAndAreClosed) {
    const auto server = startedServer(instantSource());
    const struct {
        const char* name;
        std::string request;
        bool halfClose;
        const std::string& expected;
    } cases[] = {
        {"QueryString", "GET /widget/v1?x=1 HTTP/1.1\r\n\r\n", false, notFound},
        {"LongerPath", "GET /widget/v10 HTTP/1.1\r\n\r\n", false, notFound},
        {"CutBeforeThePathEnds", "GET /wid", false, notFound},
        {"NotUtf8", "GET /widget/v1 HTTP/1.1\r\nX: \xff\xfe\r\n\r\n", false, notFound},
        {"TlsHello", std::string("\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03", 11), false, notFound},
        {"NoLineEnd", std::string(4096, 'A'), false, notFound},
        {"NothingBeforeTheClientsEnd", "", true, notFound},
        {"TwoRequests", getRequest + getRequest, false, served},
    };
    for (const auto& [name, request, halfClose, expected] : cases) {
        SCOPED_TRACE(name);
        const int before = snapshotRequests;
        const auto result = rawExchange(request, 10s, halfClose);
        EXPECT_TRUE(result.closedByServer);
        EXPECT_EQ(result.received, expected);
        EXPECT_EQ(snapshotRequests - before, expected == served ? 1 : 0);
    }
}

TEST_F(WidgetLiveServerTest, AnswersAClientThatStoppedSendingAfterItsRequest) {
    const auto server = startedServer(deferredSource());
    std::optional<testing::RawExchange> result;
    std::thread client([&] { result = exchange(port, getRequest, 10s, true); });
    const bool asked = QTest::qWaitFor([&] { return pending.size() == 1; }, 10000);
    if (asked) {
        // Later than the half-close has certainly arrived: it must not end the connection.
        QTimer::singleShot(100ms, [&] { pending.front()(sampleWidgetSnapshot()); });
    }
    (void)QTest::qWaitFor([&] { return pending.size() == 1 && server->openConnectionCount() == 0; }, 10000);
    client.join();
    ASSERT_TRUE(asked);
    EXPECT_EQ(result->received, served);
}

TEST_F(WidgetLiveServerTest, AnswersServerErrorWithoutASnapshotAndIgnoresASecondReply) {
    const std::pair<WidgetLiveServer::SnapshotSource, std::string> cases[] = {
        {{}, serverError},
        {[](auto reply) { reply(std::nullopt); }, serverError},
        {[](auto reply) {
             reply(sampleWidgetSnapshot());
             reply(std::nullopt);
         },
         served},
    };
    for (const auto& [source, expected] : cases) {
        const auto server = startedServer(source);
        EXPECT_EQ(rawExchange(getRequest).received, expected);
    }
}

TEST_F(WidgetLiveServerTest, TheIdleTimeoutEndsASilentConnectionButNotOneWaitingForItsSnapshot) {
    const auto server = startedServer(deferredSource(), 100ms);
    const auto silent = rawExchange({}, 10s);
    EXPECT_TRUE(silent.closedByServer);
    EXPECT_EQ(silent.received, "");
    EXPECT_TRUE(QTest::qWaitFor([&] { return server->openConnectionCount() == 0; }, 10000));

    QTimer::singleShot(600ms, [&] {
        ASSERT_EQ(pending.size(), 1u);
        pending.front()(sampleWidgetSnapshot());
    });
    EXPECT_EQ(rawExchange(getRequest).received, served);
}

TEST_F(WidgetLiveServerTest, HoldsConnectionsBeyondTheCapUntilASlotFrees) {
    const auto server = startedServer(instantSource(), 60s, 2);
    const int first = testing::connectToLoopback(port);
    const int second = testing::connectToLoopback(port);
    ASSERT_TRUE(QTest::qWaitFor([&] { return server->openConnectionCount() == 2; }, 10000));

    // A third client waits in the backlog: neither answered nor closed while both slots are taken.
    const auto waiting = whileServing([this] { return testing::exchange(port, getRequest, 500ms); });
    ASSERT_TRUE(waiting.has_value());
    EXPECT_FALSE(waiting->closedByServer);
    EXPECT_EQ(waiting->received, "");
    EXPECT_EQ(server->openConnectionCount(), 2u);

    ::close(first);
    EXPECT_EQ(rawExchange(getRequest).received, served);
    ::close(second);
}

TEST_F(WidgetLiveServerTest, StaysResponsiveAfterAThousandConnectionsAtOnce) {
    const auto server = startedServer(instantSource(), 300ms);
    constexpr int flood = 1000;
    // Every connection must be ended by the server: in turns of the cap, each after the idle timeout.
    const auto closedByServer = whileServing(
        [this] {
            std::vector<pollfd> sockets;
            for (int index = 0; index < flood; ++index) {
                const int fd = testing::connectToLoopback(port, false);
                if (fd >= 0) {
                    sockets.push_back({fd, POLLIN, 0});
                }
            }
            int closed = 0;
            const auto end = std::chrono::steady_clock::now() + 40s;
            while (closed < flood && std::chrono::steady_clock::now() < end) {
                if (::poll(sockets.data(), sockets.size(), 200) <= 0) {
                    continue;
                }
                for (auto& entry : sockets) {
                    char byte;
                    if (entry.fd >= 0 && entry.revents != 0 && ::recv(entry.fd, &byte, 1, 0) <= 0) {
                        ::close(entry.fd);
                        entry.fd = -1; // poll skips it from now on
                        ++closed;
                    }
                }
            }
            for (const auto& entry : sockets) {
                if (entry.fd >= 0) {
                    ::close(entry.fd);
                }
            }
            return closed;
        },
        60s);
    ASSERT_TRUE(closedByServer.has_value());
    EXPECT_EQ(*closedByServer, flood);
    EXPECT_TRUE(QTest::qWaitFor([&] { return server->openConnectionCount() == 0; }, 10000));
    const auto response = curl({url()});
    ASSERT_TRUE(response.has_value());
    EXPECT_EQ(response->toStdString(), served);
}

TEST_F(WidgetLiveServerTest, AcceptsAgainAfterRunningOutOfDescriptors) {
    const auto server = startedServer(instantSource());

    rlimit original{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &original), 0);
    int highest = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        highest = std::max(highest, std::stoi(entry.path().filename().string()));
    }

    // The client thread starts before descriptors run out (the sanitizers need some to start one).
    std::mutex mutex;
    std::condition_variable wake;
    bool go = false;
    std::atomic<bool> answered = false;
    std::optional<testing::RawExchange> result;
    std::thread client([&] {
        {
            std::unique_lock lock(mutex);
            wake.wait_for(lock, 30s, [&] { return go; });
        }
        result = exchange(port, getRequest);
        answered = true;
    });

    // Leave exactly one free descriptor, for the client.
    rlimit lowered = original;
    lowered.rlim_cur = static_cast<rlim_t>(highest) + 32;
    const bool lowerable = ::setrlimit(RLIMIT_NOFILE, &lowered) == 0;
    std::vector<int> filler;
    for (int fd; lowerable && (fd = ::fcntl(0, F_DUPFD_CLOEXEC, 0)) >= 0;) {
        filler.push_back(fd);
    }
    if (!filler.empty()) {
        ::close(filler.back());
        filler.pop_back();
    }

    {
        std::lock_guard lock(mutex);
        go = true;
    }
    wake.notify_one();
    QTest::qWait(300); // the accept fails meanwhile
    for (const int fd : filler) {
        ::close(fd);
    }
    ::setrlimit(RLIMIT_NOFILE, &original);
    (void)QTest::qWaitFor([&] { return answered.load(); }, 15000);
    client.join();
    EXPECT_TRUE(lowerable);
    ASSERT_TRUE(result.has_value());
    EXPECT_EQ(result->received, served);
}

TEST_F(WidgetLiveServerTest, ATakenPortLeavesTheServerNotListeningAndStartingTwiceKeepsOneListener) {
    auto blocker = std::make_unique<QTcpServer>();
    ASSERT_TRUE(blocker->listen(QHostAddress::LocalHost, port));
    WidgetLiveServer server(instantSource());
    server.start();
    EXPECT_FALSE(server.isListening());
    EXPECT_EQ(server.lastError(), WidgetLiveServerError::addressInUse);

    blocker.reset();
    for (int start = 0; start < 2; ++start) { // the second start keeps the listener it has
        server.start();
        EXPECT_TRUE(server.isListening());
        EXPECT_FALSE(server.lastError().has_value());
        EXPECT_EQ(server.findChildren<QSocketNotifier*>(QString(), Qt::FindDirectChildrenOnly).size(), 1);
        EXPECT_EQ(rawExchange(getRequest).received, served);
    }
}

TEST_F(WidgetLiveServerTest, StopClosesTheListenerButAnswersTheRequestInFlight) {
    const auto server = startedServer(deferredSource());
    std::optional<testing::RawExchange> inFlight;
    std::thread client([&] { inFlight = exchange(port, getRequest); });
    const bool asked = QTest::qWaitFor([&] { return pending.size() == 1; }, 10000);
    server->stop();
    EXPECT_FALSE(server->isListening());
    EXPECT_EQ(testing::connectToLoopback(port), -1);
    if (asked) {
        pending.front()(sampleWidgetSnapshot());
    }
    (void)QTest::qWaitFor([&] { return server->openConnectionCount() == 0; }, 10000);
    client.join();
    ASSERT_TRUE(asked);
    EXPECT_EQ(inFlight->received, served);
}

TEST_F(WidgetLiveServerTest, AReplyAfterTheClientOrTheServerHasGoneEndsQuietly) {
    auto server = startedServer(deferredSource());
    // The client gives up before the snapshot is ready; the late reply still ends its connection.
    EXPECT_EQ(rawExchange(getRequest, 200ms).received, "");
    ASSERT_EQ(pending.size(), 1u);
    pending[0](sampleWidgetSnapshot());
    EXPECT_TRUE(QTest::qWaitFor([&] { return server->openConnectionCount() == 0; }, 10000));

    std::optional<testing::RawExchange> result;
    std::thread client([&] { result = exchange(port, getRequest, 10s); });
    const bool asked = QTest::qWaitFor([&] { return pending.size() == 2; }, 10000);
    server.reset();
    if (asked) {
        pending[1](sampleWidgetSnapshot());
    }
    client.join();
    ASSERT_TRUE(asked);
    EXPECT_TRUE(result->closedByServer);
    EXPECT_EQ(result->received, "");
}

} // namespace
} // namespace gaugewell
