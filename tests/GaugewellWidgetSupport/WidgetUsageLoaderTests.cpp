#include "GaugewellWidgetSupport/WidgetUsageLoader.h"
#include "LocalHttpServer.h"
#include "RawSocketServer.h"
#include "WidgetFeedSamples.h"

#include <arpa/inet.h>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace gaugewell {
namespace {

using namespace std::chrono_literals;
using testing::sampleWidgetSnapshot;
using testing::widgetFeedResponse;

// Answers every request for the feed with exactly `response`.
std::unique_ptr<testing::RawSocketServer> feedServer(std::string response) {
    return std::make_unique<testing::RawSocketServer>(std::move(response));
}

WidgetFeedEndpoint endpoint(std::uint16_t port, std::chrono::milliseconds timeout = 5s) {
    WidgetFeedEndpoint endpoint;
    endpoint.port = port;
    endpoint.timeout = timeout;
    return endpoint;
}

// A TCP socket bound to 127.0.0.1 on a port of the kernel's choosing, listening when asked.
struct LoopbackSocket {
    explicit LoopbackSocket(bool listening) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        EXPECT_TRUE(fd >= 0 && ::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
                    (!listening || ::listen(fd, 8) == 0) &&
                    ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) == 0);
        port = ntohs(address.sin_port);
    }
    ~LoopbackSocket() { ::close(fd); }

    int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    std::uint16_t port = 0;
};

TEST(WidgetUsageLoaderTest, FetchesTheSnapshotWithAnUncachedGet) {
    const auto server = std::make_unique<testing::LocalHttpServer>();
    server->route("/widget/v1", testing::HttpAnswer{200, testing::sampleWidgetJson});
    const auto result = WidgetUsageLoader::live(endpoint(server->port())).fetch();
    ASSERT_TRUE(result) << describe(result.error());
    EXPECT_EQ(*result, sampleWidgetSnapshot());

    const auto requests = server->requests();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].method, "GET");
    EXPECT_EQ(requests[0].target, "/widget/v1");
    EXPECT_EQ(requests[0].get_header_value("Cache-Control"), "no-store");
    EXPECT_EQ(requests[0].get_header_value("Host"), "127.0.0.1:" + std::to_string(server->port()));
    EXPECT_FALSE(requests[0].has_header("Cookie"));
}

TEST(WidgetUsageLoaderTest, AnythingButA200WithASnapshotIsTheRightError) {
    const WidgetFetchError invalidResponse = WidgetUsageLoaderError::invalidResponse;
    const std::string snapshot = testing::sampleWidgetJson;
    const struct {
        const char* name;
        std::string response;
        WidgetFetchError expected;
    } cases[] = {
        {"NotFound", widgetFeedResponse("404 Not Found", ""), invalidResponse},
        {"ServerError", widgetFeedResponse("500 Internal Server Error", ""), invalidResponse},
        // Only exactly 200 counts, even with a snapshot in the body.
        {"OtherSuccess", widgetFeedResponse("203 Non-Authoritative Information", snapshot), invalidResponse},
        {"Redirect", "HTTP/1.1 302 Found\r\nLocation: /elsewhere\r\nContent-Length: 0\r\n\r\n",
         invalidResponse},
        {"NotHttp", "garbage\r\n\r\n", invalidResponse},
        {"Oversized", widgetFeedResponse("200 OK", std::string(100'000, ' ') + snapshot), invalidResponse},
        {"GarbageBody", widgetFeedResponse("200 OK", "<html>hello</html>"),
         WidgetSnapshotDecodingError::malformedJSON},
        {"UnknownState",
         widgetFeedResponse("200 OK", R"({"updatedAt":1,"providers":[)"
                                      R"({"service":"codex","state":"paused","windows":[]}]})"),
         WidgetSnapshotDecodingError::unknownValue},
        {"ClosedWithoutAnswer", "", WidgetTransportError::connectionFailed},
    };
    for (const auto& [name, response, expected] : cases) {
        SCOPED_TRACE(name);
        const auto server = feedServer(response);
        auto limited = endpoint(server->port());
        limited.maximumResponseBytes = 4096;
        const auto result = fetchWidgetUsageSnapshot(limited);
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error(), expected) << describe(result.error());
    }
}

TEST(WidgetUsageLoaderTest, SilentServerTimesOut) {
    // Listening but never accepting: the kernel completes the handshake, nobody ever answers.
    const LoopbackSocket silent(true);
    const auto result = fetchWidgetUsageSnapshot(endpoint(silent.port, 200ms));
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error(), WidgetFetchError(WidgetTransportError::timedOut));
}

TEST(WidgetUsageLoaderTest, ApplicationNotRunningIsAConnectionError) {
    const LoopbackSocket closed(false); // bound but not listening: connections are refused
    const auto result = fetchWidgetUsageSnapshot(endpoint(closed.port));
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error(), WidgetFetchError(WidgetTransportError::cannotConnect));
}

class WidgetFeedEnvironment : public ::testing::Test {
protected:
    void TearDown() override { ::unsetenv("GAUGEWELL_WIDGET_PORT"); }
};

TEST_F(WidgetFeedEnvironment, APortNumberOverridesTheDefaultEndpointAndAnythingElseIsRefused) {
    ::unsetenv("GAUGEWELL_WIDGET_PORT");
    EXPECT_EQ(WidgetFeedEndpoint::fromEnvironment()->url(), "http://127.0.0.1:47392/widget/v1");
    EXPECT_EQ(WidgetFeedEndpoint::fromEnvironment()->timeout, 14s);
    for (const char* text : {"", "banana", "0", "65536", "70000", "+80", "80x", "-1"}) {
        ::setenv("GAUGEWELL_WIDGET_PORT", text, 1);
        EXPECT_FALSE(WidgetFeedEndpoint::fromEnvironment()) << '"' << text << '"';
    }
    ::setenv("GAUGEWELL_WIDGET_PORT", "65535", 1);
    EXPECT_EQ(WidgetFeedEndpoint::fromEnvironment()->port, 65535);
}

} // namespace
} // namespace gaugewell
