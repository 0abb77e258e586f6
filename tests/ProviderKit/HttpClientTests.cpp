#include "EnvironmentProxy.h"
#include "LocalHttpServer.h"
#include "ProviderKit/Http/CurlHttpClient.h"
#include "RawSocketServer.h"

#include <gtest/gtest.h>

namespace gaugewell {
namespace {

using testing::HttpAnswer;
using testing::LocalHttpServer;
using testing::RawSocketServer;
using namespace std::chrono_literals;

HttpRequest requestFor(std::string url, std::chrono::milliseconds timeout = 5s) {
    HttpRequest request;
    request.url = std::move(url);
    request.timeout = timeout;
    return request;
}

class CurlHttpClientTest : public ::testing::Test {
protected:
    HttpRequest request(std::string path) { return requestFor(server.baseURL() + path); }

    LocalHttpServer server;
    CurlHttpClient client;
};

TEST_F(CurlHttpClientTest, SendsMethodHeadersAndBodyExactlyAndReturnsStatusAndBody) {
    server.route("/token", HttpAnswer{201, R"({"ok":true})"});
    auto post = request("/token?x=1");
    post.method = "POST";
    post.headers = {{"Content-Type", "application/json"}, {"anthropic-beta", "oauth-2025-04-20"}};
    post.body = std::string(5000, 'x'); // large enough that curl would otherwise ask for 100-continue
    const auto response = client.send(post);
    ASSERT_TRUE(response) << describe(response.error());
    EXPECT_EQ(response->status, 201);
    EXPECT_EQ(response->body, R"({"ok":true})");
    const auto recorded = server.requests("/token");
    ASSERT_EQ(recorded.size(), 1u);
    EXPECT_EQ(recorded[0].method, "POST");
    EXPECT_EQ(recorded[0].target, "/token?x=1");
    EXPECT_EQ(recorded[0].get_header_value("content-type"), "application/json");
    EXPECT_EQ(recorded[0].get_header_value("anthropic-beta"), "oauth-2025-04-20");
    EXPECT_EQ(recorded[0].body, post.body);
    EXPECT_FALSE(recorded[0].has_header("Expect"));
}

TEST_F(CurlHttpClientTest, RedirectsAndCookiesAreNotFollowed) {
    server.route(
        "/moved",
        HttpAnswer{
            302, {}, {}, {{"Location", server.baseURL() + "/target"}, {"Set-Cookie", "s=abc; Path=/"}}});
    const auto first = client.send(request("/moved"));
    ASSERT_TRUE(first);
    EXPECT_EQ(first->status, 302);
    ASSERT_TRUE(client.send(request("/moved")));
    EXPECT_TRUE(server.requests("/target").empty());
    for (const auto& recorded : server.requests("/moved")) {
        EXPECT_FALSE(recorded.has_header("Cookie"));
    }
}

TEST_F(CurlHttpClientTest, BodiesOverTheCapAreRefused) {
    server.route("/big", HttpAnswer{200, std::string(100'000, 'a')});
    auto big = request("/big");
    big.maximumResponseBytes = 99'999;
    EXPECT_EQ(client.send(big).error(), HttpClientError::responseTooLarge);
    big.maximumResponseBytes = 100'000;
    EXPECT_EQ(client.send(big)->body.size(), 100'000u);
}

TEST_F(CurlHttpClientTest, RequestsThatWouldBeUnsafeAreRefusedBeforeSending) {
    auto injected = request("/x");
    injected.headers = {{"Accept", "application/json\r\nX-Injected: 1"}};
    auto badMethod = request("/x");
    badMethod.method = "GET /other HTTP/1.1\r\n";
    const struct {
        HttpRequest request;
        HttpClientError expected;
    } cases[] = {
        {injected, HttpClientError::invalidRequest},
        {badMethod, HttpClientError::invalidRequest},
        // 0.0.0.0 is not a loopback host; were the check broken, the request would still stay here.
        {requestFor("http://0.0.0.0:1/"), HttpClientError::insecureURL},
        {requestFor(server.baseURL() + "/x#fragment"), HttpClientError::invalidURL},
    };
    for (const auto& [refused, expected] : cases) {
        EXPECT_EQ(client.send(refused).error(), expected) << refused.url;
    }
    EXPECT_TRUE(server.requests().empty());
}

TEST(CurlHttpClient, PeersThatDoNotAnswerProperlyFailWithinTheTimeOut) {
    RawSocketServer notHttp("SSH-2.0-OpenSSH_9.2\r\nnot http at all\r\n");
    RawSocketServer hangsUp("");
    RawSocketServer silent{RawSocketServer::Silent()};
    std::string refusedURL;
    {
        RawSocketServer gone("");
        refusedURL = gone.baseURL();
    }
    const struct {
        std::string url;
        HttpClientError expected;
    } cases[] = {
        {silent.baseURL(), HttpClientError::timedOut},
        {notHttp.baseURL(), HttpClientError::invalidResponse},
        {hangsUp.baseURL(), HttpClientError::transportFailed},
        {refusedURL, HttpClientError::transportFailed},
    };
    for (const auto& [url, expected] : cases) {
        const auto started = std::chrono::steady_clock::now();
        const auto response = CurlHttpClient().send(requestFor(url + "/x", 300ms));
        EXPECT_LT(std::chrono::steady_clock::now() - started, 5s) << url;
        ASSERT_FALSE(response) << url;
        EXPECT_EQ(response.error(), expected) << url << ": " << describe(response.error());
    }
}

// Remote hosts are https only, so a proxy sees nothing but a CONNECT: users who need one keep it.
// Loopback traffic never goes through it (the sign-in's own test shows that).
TEST(CurlHttpClient, RemoteHostsGoThroughTheEnvironmentsProxy) {
    testing::EnvironmentProxy proxy;
    // 0.0.0.0 is not a loopback host to the client, yet the kernel would connect it to this machine.
    EXPECT_FALSE(CurlHttpClient().send(requestFor("https://0.0.0.0:1/api", 5s)));
    EXPECT_EQ(proxy.connectionCount(), 1);
}

} // namespace
} // namespace gaugewell
