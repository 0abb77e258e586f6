#include "Platform/FileDescriptor.h"
#include "ProviderKit/ClaudeSignIn/OAuthLoopbackServer.h"

#include <arpa/inet.h>
#include <dirent.h>
#include <fcntl.h>
#include <future>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <set>
#include <sys/socket.h>

namespace gaugewell {
namespace {

using namespace std::chrono_literals;

const std::string successPage = "https://platform.claude.com/oauth/code/success?app=claude-code";

FileDescriptor connectTo(const char* address, std::uint16_t port) {
    FileDescriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in target{};
    target.sin_family = AF_INET;
    target.sin_port = htons(port);
    ::inet_pton(AF_INET, address, &target.sin_addr);
    if (::connect(socket.get(), reinterpret_cast<sockaddr*>(&target), sizeof target) != 0) {
        socket.reset();
    }
    return socket;
}

// A browser stand-in: connects, sends `first` (or hangs up at once when it is absent), reads until the
// server closes, sends `later`, and returns what came back.
std::future<std::string> browse(std::uint16_t port, std::optional<std::string> first,
                                std::string later = {}) {
    return std::async(std::launch::async, [port, first, later] {
        const auto socket = connectTo("127.0.0.1", port);
        if (first) {
            ::send(socket.get(), first->data(), first->size(), MSG_NOSIGNAL);
        } else {
            ::shutdown(socket.get(), SHUT_WR);
        }
        std::string received;
        char buffer[4096];
        pollfd readable{socket.get(), POLLIN, 0};
        for (ssize_t count = 1; count > 0 && ::poll(&readable, 1, 10'000) > 0;) {
            count = ::recv(socket.get(), buffer, sizeof buffer, 0);
            received.append(buffer, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        }
        ::send(socket.get(), later.data(), later.size(), MSG_NOSIGNAL);
        return received;
    });
}

std::unique_ptr<OAuthLoopbackServer> openServer() {
    auto server = OAuthLoopbackServer::open(successPage);
    EXPECT_TRUE(server);
    return std::move(server).value();
}

std::set<int> openDescriptors() {
    std::set<int> descriptors;
    DIR* folder = ::opendir("/proc/self/fd");
    while (dirent* entry = ::readdir(folder)) {
        if (entry->d_name[0] != '.' && std::atoi(entry->d_name) != ::dirfd(folder)) {
            descriptors.insert(std::atoi(entry->d_name));
        }
    }
    ::closedir(folder);
    return descriptors;
}

TEST(OAuthLoopbackServer, ReturnsCodeAndStateRedirectsTheBrowserAndRefusesASecondWait) {
    auto server = openServer();
    auto browser =
        browse(server->port(), {"GET /callback?code=a&state=b HTTP/1.1\r\nHost: localhost\r\n\r\n"});
    const auto callback = server->waitForCallback(10s);
    ASSERT_TRUE(callback);
    EXPECT_EQ(*callback, (OAuthCallback{"a", "b"}));
    EXPECT_EQ(browser.get(), "HTTP/1.1 302 Found\r\nLocation: " + successPage +
                                 "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    EXPECT_EQ(server->waitForCallback(1s).error(), ClaudeOAuthError::callbackFailed);
}

TEST(OAuthLoopbackServer, ListensOnlyOn127001WithCloseOnExecDescriptors) {
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
    // Bound to 127.0.0.1 itself: a wildcard address would take this one too.
    EXPECT_FALSE(connectTo("127.0.0.2", server->port()));
}

// The accept and the one read share the time-out: a connection that never sends cannot hold the wait.
TEST(OAuthLoopbackServer, SilentConnectionFailsAtTheTimeOut) {
    auto server = openServer();
    const auto silent = connectTo("127.0.0.1", server->port());
    ASSERT_TRUE(silent);
    const auto started = std::chrono::steady_clock::now();
    EXPECT_EQ(server->waitForCallback(300ms).error(), ClaudeOAuthError::callbackFailed);
    EXPECT_GE(std::chrono::steady_clock::now() - started, 290ms);
}

// Cancelling a running wait is shown by the session's cancelled sign-in.
TEST(OAuthLoopbackServer, CancelBeforeTheWaitEndsItAtOnce) {
    auto server = openServer();
    server->cancel();
    EXPECT_EQ(server->waitForCallback(60s).error(), ClaudeOAuthError::callbackFailed);
}

// What only the socket shows: each of these fails with `invalidCallback`, the browser gets no answer at
// all, and the listener is closed afterwards.
TEST(OAuthLoopbackServer, BadRequestsGetNoAnswer) {
    const struct {
        const char* name;
        std::optional<std::string> first;
        std::string later;
    } cases[] = {
        {"closed without sending", std::nullopt, ""},
        {"state beyond the one read of 16 KiB",
         "GET /callback?code=a&pad=" + std::string(20 * 1024, 'A') + "&state=b HTTP/1.1\r\n\r\n", ""},
        {"split request judged by its first piece", "GET /callb", "ack?code=a&state=b HTTP/1.1\r\n\r\n"},
    };
    for (const auto& [name, first, later] : cases) {
        auto server = openServer();
        auto browser = browse(server->port(), first, later);
        EXPECT_EQ(server->waitForCallback(10s).error(), ClaudeOAuthError::invalidCallback) << name;
        EXPECT_EQ(browser.get(), "") << name;
        EXPECT_FALSE(connectTo("127.0.0.1", server->port())) << name;
    }
}

TEST(OAuthLoopbackServer, CallbackFollowsUrlComponentRules) {
    const struct {
        std::string request;
        std::optional<OAuthCallback> expected;
    } cases[] = {
        // The method is not checked; empty pieces before the request line are dropped.
        {"POST /callback?state=s&code=c HTTP/1.1", OAuthCallback{"c", "s"}},
        {"\r\n\r\nGET  /callback?code=a&state=b  HTTP/1.1\r\n", OAuthCallback{"a", "b"}},
        // Values are percent-decoded; "+" stays a plus; the first item of a name wins.
        {"GET /callback?code=a%2Fb%20c+d&state=x%3Dy&code=second HTTP/1.1", OAuthCallback{"a/b c+d", "x=y"}},
        {"GET /%63allback?code=a&state=b HTTP/1.1", OAuthCallback{"a", "b"}},
        {"GET /callback?code=a&state=b#fragment HTTP/1.1", OAuthCallback{"a", "b"}},
        {"GET /callback?code=a HTTP/1.1", std::nullopt},
        {"GET /callback?code&state=b HTTP/1.1", std::nullopt},
        {"GET /callback HTTP/1.1", std::nullopt},
        {"GET http://evil/callback?code=a&state=b HTTP/1.1", std::nullopt},
        {"GET /callback?code=%zz&state=b HTTP/1.1", std::nullopt},
        {"GET /callback?code=a&state=b%2 HTTP/1.1", std::nullopt},
        {"GET /callback?code=%ff&state=b HTTP/1.1", std::nullopt}, // not UTF-8 once decoded
        {std::string("GET /callback?code=a") + '\0' + "&state=b HTTP/1.1", std::nullopt},
        {std::string("\x16\x03\x01\x00\xa5\x01\x00\x00\xa1\x03\x03", 11), std::nullopt}, // a TLS hello
    };
    for (const auto& [request, expected] : cases) {
        const auto result = OAuthLoopbackServer::callbackFromRequest(request);
        EXPECT_TRUE((result ? std::optional(*result) : std::nullopt) == expected)
            << ::testing::PrintToString(request.substr(0, 80));
    }
}

} // namespace
} // namespace gaugewell
