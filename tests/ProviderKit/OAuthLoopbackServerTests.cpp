#include "ProviderKit/OAuthLoopbackServer.h"

#include <arpa/inet.h>
#include <chrono>
#include <csignal>
#include <dirent.h>
#include <fcntl.h>
#include <future>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <ostream>
#include <poll.h>
#include <set>
#include <sys/socket.h>
#include <unistd.h>

namespace gaugewell {
namespace {

const std::string successPage = "https://platform.claude.com/oauth/code/success?app=claude-code";

int connectTo(const char* address, std::uint16_t port) {
    const int descriptor = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in target{};
    target.sin_family = AF_INET;
    target.sin_port = htons(port);
    ::inet_pton(AF_INET, address, &target.sin_addr);
    if (::connect(descriptor, reinterpret_cast<sockaddr*>(&target), sizeof target) != 0) {
        ::close(descriptor);
        return -1;
    }
    return descriptor;
}

// Everything the server sends until it closes (bounded in time).
std::string readUntilClosed(int descriptor) {
    std::string received;
    char buffer[4096];
    for (;;) {
        pollfd fd{descriptor, POLLIN, 0};
        if (::poll(&fd, 1, 10'000) <= 0) {
            return received + "<client timed out>";
        }
        const ssize_t count = ::recv(descriptor, buffer, sizeof buffer, 0);
        if (count <= 0) {
            return received;
        }
        received.append(buffer, static_cast<std::size_t>(count));
    }
}

// A browser stand-in: connects, sends `pieces` (the first at once, the rest only after the server has
// answered or closed), and returns what came back.
std::future<std::string> browse(std::uint16_t port, std::vector<std::string> pieces) {
    return std::async(std::launch::async, [port, pieces = std::move(pieces)] {
        const int descriptor = connectTo("127.0.0.1", port);
        if (descriptor < 0) {
            return std::string("<connect failed>");
        }
        if (!pieces.empty() && !pieces.front().empty()) {
            ::send(descriptor, pieces.front().data(), pieces.front().size(), MSG_NOSIGNAL);
        }
        if (pieces.empty()) {
            ::shutdown(descriptor, SHUT_WR); // connects and closes without sending anything
        }
        auto received = readUntilClosed(descriptor);
        for (std::size_t index = 1; index < pieces.size(); ++index) {
            ::send(descriptor, pieces[index].data(), pieces[index].size(), MSG_NOSIGNAL);
        }
        ::close(descriptor);
        return received;
    });
}

std::unique_ptr<OAuthLoopbackServer> openServer() {
    auto server = OAuthLoopbackServer::open(successPage);
    EXPECT_TRUE(server.hasValue());
    return std::move(server).value();
}

class OAuthLoopbackServerTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { std::signal(SIGPIPE, SIG_IGN); }
};

TEST_F(OAuthLoopbackServerTest, ReturnsCodeAndStateRedirectsTheBrowserAndClosesTheListener) {
    auto server = openServer();
    auto browser =
        browse(server->port(), {"GET /callback?code=a&state=b HTTP/1.1\r\nHost: localhost\r\n\r\n"});
    const auto callback = server->waitForCallback(10);
    ASSERT_TRUE(callback.hasValue());
    EXPECT_EQ(*callback, (OAuthCallback{"a", "b"}));
    EXPECT_EQ(browser.get(), "HTTP/1.1 302 Found\r\n"
                             "Location: https://platform.claude.com/oauth/code/success?app=claude-code\r\n"
                             "Content-Length: 0\r\n"
                             "Connection: close\r\n\r\n");
    EXPECT_EQ(connectTo("127.0.0.1", server->port()), -1);
    // A second wait is refused rather than blocking.
    EXPECT_EQ(server->waitForCallback(1).error(), ClaudeOAuthError::callbackFailed);
}

std::set<int> openDescriptors() {
    std::set<int> descriptors;
    DIR* folder = ::opendir("/proc/self/fd");
    const int own = ::dirfd(folder);
    while (dirent* entry = ::readdir(folder)) {
        if (entry->d_name[0] != '.' && std::atoi(entry->d_name) != own) {
            descriptors.insert(std::atoi(entry->d_name));
        }
    }
    ::closedir(folder);
    return descriptors;
}

TEST_F(OAuthLoopbackServerTest, ListensOnlyOn127001WithCloseOnExecDescriptors) {
    const auto before = openDescriptors();
    auto server = openServer();
    int checked = 0;
    for (const int descriptor : openDescriptors()) {
        if (!before.count(descriptor)) {
            EXPECT_TRUE(::fcntl(descriptor, F_GETFD) & FD_CLOEXEC) << "descriptor " << descriptor;
            ++checked;
        }
    }
    EXPECT_GE(checked, 2); // the listener and the cancel pipe

    EXPECT_NE(server->port(), 0);
    EXPECT_EQ(connectTo("127.0.0.2", server->port()), -1);
    const int v6 = ::socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in6 target{};
    target.sin6_family = AF_INET6;
    target.sin6_port = htons(server->port());
    target.sin6_addr = in6addr_loopback;
    EXPECT_NE(::connect(v6, reinterpret_cast<sockaddr*>(&target), sizeof target), 0);
    ::close(v6);
}

// Neither no connection nor a connection that never sends holds the wait past its time-out.
TEST_F(OAuthLoopbackServerTest, WaitWithoutARequestFailsAtItsTimeOut) {
    auto server = openServer();
    const auto started = std::chrono::steady_clock::now();
    EXPECT_EQ(server->waitForCallback(0.2).error(), ClaudeOAuthError::callbackFailed);
    EXPECT_GE(std::chrono::steady_clock::now() - started, std::chrono::milliseconds(190));

    server = openServer();
    const int silent = connectTo("127.0.0.1", server->port());
    ASSERT_GE(silent, 0);
    EXPECT_EQ(server->waitForCallback(0.3).error(), ClaudeOAuthError::callbackFailed);
    ::close(silent);
}

TEST_F(OAuthLoopbackServerTest, CancelEndsARunningOrLaterWait) {
    auto server = openServer();
    auto waiting = std::async(std::launch::async, [&] { return server->waitForCallback(60); });
    server->cancel();
    ASSERT_EQ(waiting.wait_for(std::chrono::seconds(10)), std::future_status::ready);
    EXPECT_EQ(waiting.get().error(), ClaudeOAuthError::callbackFailed);
    EXPECT_EQ(connectTo("127.0.0.1", server->port()), -1);

    server = openServer();
    server->cancel();
    EXPECT_EQ(server->waitForCallback(60).error(), ClaudeOAuthError::callbackFailed);
}

// Hostile or wrong requests: each fails with `invalidCallback`, the browser gets no answer at all, and
// the listener is closed afterwards.
struct HostileCase {
    std::string name;
    std::vector<std::string> pieces;
};

void PrintTo(const HostileCase& hostile, std::ostream* out) {
    *out << hostile.name;
}

class HostileRequest : public OAuthLoopbackServerTest, public ::testing::WithParamInterface<HostileCase> {};

TEST_P(HostileRequest, FailsWithoutAnswerAndClosesTheListener) {
    auto server = openServer();
    auto browser = browse(server->port(), GetParam().pieces);
    const auto callback = server->waitForCallback(10);
    ASSERT_FALSE(callback.hasValue());
    EXPECT_EQ(callback.error(), ClaudeOAuthError::invalidCallback);
    EXPECT_EQ(browser.get(), "");
    EXPECT_EQ(connectTo("127.0.0.1", server->port()), -1);
}

std::string binaryGarbage() {
    std::string bytes;
    for (int index = 0; index < 4096; ++index) {
        bytes.push_back(static_cast<char>((index * 7919) & 0xff));
    }
    return bytes;
}

INSTANTIATE_TEST_SUITE_P(
    OAuthLoopbackServer, HostileRequest,
    ::testing::Values(
        HostileCase{"ClosedWithoutSending", {}}, HostileCase{"BinaryGarbage", {binaryGarbage()}},
        HostileCase{"TrailingSlash", {"GET /callback/?code=a&state=b HTTP/1.1\r\n\r\n"}},
        HostileCase{"Favicon", {"GET /favicon.ico HTTP/1.1\r\n\r\n"}},
        HostileCase{"NoState", {"GET /callback?code=a HTTP/1.1\r\n\r\n"}},
        HostileCase{"NoCode", {"GET /callback?state=b HTTP/1.1\r\n\r\n"}},
        HostileCase{"CodeWithoutValue", {"GET /callback?code&state=b HTTP/1.1\r\n\r\n"}},
        HostileCase{"NoQuery", {"GET /callback HTTP/1.1\r\n\r\n"}}, HostileCase{"NoTarget", {"GET\r\n\r\n"}},
        HostileCase{"RequestLineOf20KB", {"GET /" + std::string(20 * 1024, 'A') + " HTTP/1.1\r\n\r\n"}},
        HostileCase{"SplitRequestJudgedByFirstPiece", {"GET /callb", "ack?code=a&state=b HTTP/1.1\r\n\r\n"}},
        HostileCase{"BadPercentEscape", {"GET /callback?code=%zz&state=b HTTP/1.1\r\n\r\n"}},
        HostileCase{"EscapeDecodingToInvalidUtf8", {"GET /callback?code=%ff&state=b HTTP/1.1\r\n\r\n"}},
        HostileCase{"NonAsciiInTarget", {"GET /callback?code=\xc3\xa9&state=b HTTP/1.1\r\n\r\n"}},
        HostileCase{"NulInTarget",
                    {std::string("GET /callback?code=a") + '\0' + "&state=b HTTP/1.1\r\n\r\n"}}),
    [](const auto& info) { return info.param.name; });

// The parsing rules on their own.
struct ParseCase {
    std::string request;
    std::optional<OAuthCallback> expected;
};

void PrintTo(const ParseCase& parse, std::ostream* out) {
    *out << ::testing::PrintToString(parse.request.substr(0, 80));
}

class CallbackParsing : public ::testing::TestWithParam<ParseCase> {};

TEST_P(CallbackParsing, FollowsUrlComponentRules) {
    const auto result = OAuthLoopbackServer::callbackFromRequest(GetParam().request);
    if (GetParam().expected) {
        ASSERT_TRUE(result.hasValue()) << GetParam().request;
        EXPECT_EQ(*result, *GetParam().expected);
    } else {
        ASSERT_FALSE(result.hasValue()) << GetParam().request;
        EXPECT_EQ(result.error(), ClaudeOAuthError::invalidCallback);
    }
}

INSTANTIATE_TEST_SUITE_P(
    OAuthLoopbackServer, CallbackParsing,
    ::testing::Values(ParseCase{"GET /callback?code=a&state=b HTTP/1.1\r\n", OAuthCallback{"a", "b"}},
                      // The method is not checked; empty pieces before the request line are dropped.
                      ParseCase{"POST /callback?state=s&code=c HTTP/1.1", OAuthCallback{"c", "s"}},
                      ParseCase{"\r\n\r\nGET  /callback?code=a&state=b  HTTP/1.1\r\n",
                                OAuthCallback{"a", "b"}},
                      // Values are percent-decoded; "+" stays a plus; the first item of a name wins.
                      ParseCase{"GET /callback?code=a%2Fb%20c+d&state=x%3Dy&code=second HTTP/1.1",
                                OAuthCallback{"a/b c+d", "x=y"}},
                      ParseCase{"GET /callback?code=&state= HTTP/1.1", OAuthCallback{"", ""}},
                      ParseCase{"GET /%63allback?code=a&state=b HTTP/1.1", OAuthCallback{"a", "b"}},
                      ParseCase{"GET /callback?code=a&state=b#fragment HTTP/1.1", OAuthCallback{"a", "b"}},
                      ParseCase{"GET /callback?code=a&code=b HTTP/1.1", std::nullopt},
                      ParseCase{"GET /Callback?code=a&state=b HTTP/1.1", std::nullopt},
                      ParseCase{"GET //callback?code=a&state=b HTTP/1.1", std::nullopt},
                      ParseCase{"GET http://evil/callback?code=a&state=b HTTP/1.1", std::nullopt},
                      ParseCase{"GET /callback?code=a&state=b%2 HTTP/1.1", std::nullopt},
                      ParseCase{"GET /callback?code=a|&state=b HTTP/1.1", std::nullopt},
                      ParseCase{"", std::nullopt}));

} // namespace
} // namespace gaugewell
