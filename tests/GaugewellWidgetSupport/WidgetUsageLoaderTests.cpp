#include "GaugewellWidgetSupport/WidgetUsageLoader.h"

#include <arpa/inet.h>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <mutex>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace gaugewell {
namespace {

using namespace std::chrono_literals;

class Descriptor {
public:
    explicit Descriptor(int fd = -1)
        : fd(fd) {}
    Descriptor(Descriptor&& other) noexcept
        : fd(std::exchange(other.fd, -1)) {}
    Descriptor& operator=(Descriptor&&) = delete;
    ~Descriptor() {
        if (fd >= 0) {
            ::close(fd);
        }
    }
    int get() const { return fd; }

private:
    int fd;
};

// A TCP socket on 127.0.0.1 with a port of the kernel's choosing; listening when asked.
Descriptor loopbackSocket(bool listening, std::uint16_t& port) {
    Descriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (socket.get() < 0 ||
        ::bind(socket.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        (listening && ::listen(socket.get(), 8) != 0) ||
        ::getsockname(socket.get(), reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        ADD_FAILURE() << "cannot open a loopback socket";
        return Descriptor();
    }
    port = ntohs(address.sin_port);
    return socket;
}

// Answers every connection with the same bytes after reading the request head, then closes it.
// Every wait is bounded, and the destructor stops it through a pipe.
class TinyHttpServer {
public:
    explicit TinyHttpServer(std::string response)
        : response(std::move(response))
        , listener(loopbackSocket(true, port_)) {
        int fds[2];
        if (::pipe2(fds, O_CLOEXEC) != 0) {
            ADD_FAILURE() << "pipe2 failed";
            return;
        }
        stopReader = std::make_unique<Descriptor>(fds[0]);
        stopWriter = std::make_unique<Descriptor>(fds[1]);
        thread = std::thread([this] { serve(); });
    }

    ~TinyHttpServer() {
        if (thread.joinable()) {
            const char byte = 0;
            [[maybe_unused]] const auto written = ::write(stopWriter->get(), &byte, 1);
            thread.join();
        }
    }

    std::uint16_t port() const { return port_; }
    WidgetFeedEndpoint endpoint(std::chrono::milliseconds timeout = 5000ms) const {
        WidgetFeedEndpoint endpoint;
        endpoint.port = port_;
        endpoint.timeout = timeout;
        return endpoint;
    }
    std::vector<std::string> requests() const {
        const std::lock_guard lock(mutex);
        return requests_;
    }

private:
    bool stopRequested(int timeoutMilliseconds, int fd) const {
        pollfd fds[2] = {{stopReader->get(), POLLIN, 0}, {fd, POLLIN, 0}};
        const int ready = ::poll(fds, 2, timeoutMilliseconds);
        return ready <= 0 || (fds[0].revents & POLLIN) != 0;
    }

    void serve() {
        while (!stopRequested(10'000, listener.get())) {
            const Descriptor connection(::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
            if (connection.get() < 0) {
                continue;
            }
            std::string request;
            char buffer[4096];
            while (request.find("\r\n\r\n") == std::string::npos && request.size() < 65536 &&
                   !stopRequested(5'000, connection.get())) {
                const auto count = ::recv(connection.get(), buffer, sizeof buffer, 0);
                if (count <= 0) {
                    break;
                }
                request.append(buffer, static_cast<std::size_t>(count));
            }
            {
                const std::lock_guard lock(mutex);
                requests_.push_back(request);
            }
            std::size_t sent = 0;
            while (sent < response.size()) {
                const auto count =
                    ::send(connection.get(), response.data() + sent, response.size() - sent, MSG_NOSIGNAL);
                if (count <= 0) {
                    break; // the client gave up, as it should for an oversized answer
                }
                sent += static_cast<std::size_t>(count);
            }
            ::shutdown(connection.get(), SHUT_WR);
        }
    }

    std::string response;
    std::uint16_t port_ = 0;
    Descriptor listener;
    std::unique_ptr<Descriptor> stopReader;
    std::unique_ptr<Descriptor> stopWriter;
    mutable std::mutex mutex;
    std::vector<std::string> requests_;
    std::thread thread;
};

std::string httpResponse(const std::string& status, const std::string& body) {
    return "HTTP/1.1 " + status +
           "\r\nContent-Type: application/json\r\nCache-Control: no-store\r\nContent-Length: " +
           std::to_string(body.size()) + "\r\nConnection: close\r\n\r\n" + body;
}

const WidgetUsageSnapshot
    snapshot(widgetDateFromSecondsSinceReferenceDate(785001234.5),
             {WidgetProviderUsage(WidgetProviderService::codex, WidgetProviderState::available,
                                  {WidgetWindow("primary", "Five-hour", 0.42,
                                                widgetDateFromSecondsSinceReferenceDate(785010000))}),
              WidgetProviderUsage(WidgetProviderService::claude, WidgetProviderState::signInRequired, {})});

TEST(WidgetUsageLoaderTest, FetchesTheSnapshotWithAnUncachedGet) {
    const TinyHttpServer server(httpResponse("200 OK", snapshot.json()));
    const auto result = WidgetUsageLoader::live(server.endpoint()).fetch();
    ASSERT_TRUE(result) << widgetFetchErrorText(result.error());
    EXPECT_EQ(*result, snapshot);

    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].rfind("GET /widget/v1 HTTP/1.1\r\n", 0), 0u) << requests[0];
    EXPECT_NE(requests[0].find("\r\nCache-Control: no-store\r\n"), std::string::npos) << requests[0];
    EXPECT_NE(requests[0].find("\r\nHost: 127.0.0.1:" + std::to_string(server.port()) + "\r\n"),
              std::string::npos);
    EXPECT_EQ(requests[0].find("Cookie"), std::string::npos);
}

struct FailureCase {
    std::string name;
    std::string response;
    WidgetFetchError expected;
};

class WidgetUsageLoaderFailures : public ::testing::TestWithParam<FailureCase> {};

TEST_P(WidgetUsageLoaderFailures, ReportTheRightError) {
    const TinyHttpServer server(GetParam().response);
    auto endpoint = server.endpoint();
    endpoint.maximumResponseBytes = 4096;
    const auto result = fetchWidgetUsageSnapshot(endpoint);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error(), GetParam().expected) << widgetFetchErrorText(result.error());
}

const WidgetFetchError invalidResponse = WidgetUsageLoaderError::invalidResponse;

INSTANTIATE_TEST_SUITE_P(
    Cases, WidgetUsageLoaderFailures,
    ::testing::Values(
        FailureCase{"NotFound", httpResponse("404 Not Found", ""), invalidResponse},
        FailureCase{"ServerError", httpResponse("500 Internal Server Error", ""), invalidResponse},
        // Only exactly 200 counts, even with a snapshot in the body.
        FailureCase{"OtherSuccess", httpResponse("203 Non-Authoritative Information", snapshot.json()),
                    invalidResponse},
        FailureCase{"Redirect", "HTTP/1.1 302 Found\r\nLocation: /elsewhere\r\nContent-Length: 0\r\n\r\n",
                    invalidResponse},
        FailureCase{"NotHttp", "garbage\r\n\r\n", invalidResponse},
        FailureCase{"Oversized", httpResponse("200 OK", std::string(100'000, ' ') + snapshot.json()),
                    invalidResponse},
        FailureCase{"GarbageBody", httpResponse("200 OK", "<html>hello</html>"),
                    WidgetSnapshotDecodingError::malformedJSON},
        FailureCase{"UnknownState",
                    httpResponse("200 OK", R"({"updatedAt":1,"providers":[)"
                                           R"({"service":"codex","state":"paused","windows":[]}]})"),
                    WidgetSnapshotDecodingError::unknownValue},
        FailureCase{"ClosedWithoutAnswer", "", WidgetTransportError::connectionFailed}),
    [](const auto& info) { return info.param.name; });

TEST(WidgetUsageLoaderTest, SilentServerTimesOut) {
    // Listening but never accepting: the kernel completes the handshake, nobody ever answers.
    std::uint16_t port = 0;
    const auto silent = loopbackSocket(true, port);
    WidgetFeedEndpoint endpoint;
    endpoint.port = port;
    endpoint.timeout = 200ms;
    const auto result = fetchWidgetUsageSnapshot(endpoint);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error(), WidgetFetchError(WidgetTransportError::timedOut));
}

TEST(WidgetUsageLoaderTest, ApplicationNotRunningIsAConnectionError) {
    // Bound but not listening: connections are refused.
    std::uint16_t port = 0;
    const auto closed = loopbackSocket(false, port);
    WidgetFeedEndpoint endpoint;
    endpoint.port = port;
    const auto result = fetchWidgetUsageSnapshot(endpoint);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error(), WidgetFetchError(WidgetTransportError::cannotConnect));
}

class WidgetFeedEnvironment : public ::testing::Test {
protected:
    void TearDown() override { ::unsetenv("GAUGEWELL_WIDGET_PORT"); }
};

TEST_F(WidgetFeedEnvironment, DefaultEndpoint) {
    ::unsetenv("GAUGEWELL_WIDGET_PORT");
    const auto endpoint = WidgetFeedEndpoint::fromEnvironment();
    EXPECT_EQ(endpoint.url(), "http://127.0.0.1:47392/widget/v1");
    EXPECT_EQ(endpoint.timeout, 14s);
}

TEST_F(WidgetFeedEnvironment, OnlyAPortNumberOverridesThePort) {
    for (const char* text : {"", "0", "65536", "-1", "+80", "80x", " 80", "0x50", "99999999999999999999"}) {
        ::setenv("GAUGEWELL_WIDGET_PORT", text, 1);
        EXPECT_EQ(WidgetFeedEndpoint::fromEnvironment().port, 47392) << '"' << text << '"';
    }
    ::setenv("GAUGEWELL_WIDGET_PORT", "65535", 1);
    EXPECT_EQ(WidgetFeedEndpoint::fromEnvironment().port, 65535);
}

TEST_F(WidgetFeedEnvironment, LiveLoaderFollowsTheVariable) {
    const TinyHttpServer server(httpResponse("200 OK", snapshot.json()));
    ::setenv("GAUGEWELL_WIDGET_PORT", std::to_string(server.port()).c_str(), 1);
    const auto loader = WidgetUsageLoader::live();
    const auto before = std::chrono::system_clock::now();
    const auto result = loader.fetch();
    ASSERT_TRUE(result) << widgetFetchErrorText(result.error());
    EXPECT_EQ(*result, snapshot);
    const auto now = loader.now();
    EXPECT_GE(now, before);
    EXPECT_LE(now, std::chrono::system_clock::now());
}

TEST(WidgetUsageLoaderTest, ConcurrentFetchesEachGetTheSnapshot) {
    const TinyHttpServer server(httpResponse("200 OK", snapshot.json()));
    const auto loader = WidgetUsageLoader::live(server.endpoint());
    std::vector<std::thread> threads;
    std::atomic<int> successes{0};
    for (int index = 0; index < 4; ++index) {
        threads.emplace_back([&] {
            const auto result = loader.fetch();
            if (result && *result == snapshot) {
                successes.fetch_add(1);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(successes.load(), 4);
}

} // namespace
} // namespace gaugewell
