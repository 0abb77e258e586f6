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

// Headers, small bodies and what comes back are shown by the sign-in's and usage provider's tests.
TEST_F(CurlHttpClientTest, LargeBodyGoesWholeWithoutExpect) {
    auto post = request("/token");
    post.method = "POST";
    post.body = std::string(5000, 'x'); // large enough that curl would otherwise ask for 100-continue
    const auto response = client.send(post);
    ASSERT_TRUE(response) << describe(response.error());
    const auto recorded = server.requests("/token");
    ASSERT_EQ(recorded.size(), 1u);
    EXPECT_EQ(recorded[0].method, "POST");
    EXPECT_EQ(recorded[0].body, post.body);
    EXPECT_FALSE(recorded[0].has_header("Expect"));
}

TEST(RetryAfter, SecondsOrAnHttpDateWithinADay) {
    const Date now = dateFromUnixSeconds(1'795'360'000); // Sun, 22 Nov 2026 15:06:40 GMT
    const std::pair<std::string, std::optional<Date>> cases[] = {
        {"120", addingSeconds(now, 120)},
        {" 0 ", now},
        {"99999999999", addingSeconds(now, 86400)},
        {"Sun, 22 Nov 2026 16:06:40 GMT", addingSeconds(now, 3600)},
        {"Wed, 21 Oct 2015 07:28:00 GMT", now}, // in the past: at once
        {"Mon, 22 Nov 2027 14:06:40 GMT", addingSeconds(now, 86400)},
        {"-5", std::nullopt},
        {"1.5", std::nullopt},
        {"soon", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& [value, expected] : cases) {
        EXPECT_EQ(retryAfterDate(value, now), expected) << '"' << value << '"';
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

// An answer that is not HTTP is shown by ClaudeUsageProviderTests.
TEST(CurlHttpClient, PeersThatDoNotAnswerProperlyFailWithinTheTimeOut) {
    const RawSocketServer hangsUp("");
    const RawSocketServer silent{RawSocketServer::Silent()};
    for (const auto& [url, expected] : std::vector<std::pair<std::string, HttpClientError>>{
             {silent.baseURL(), HttpClientError::timedOut},
             {hangsUp.baseURL(), HttpClientError::transportFailed}}) {
        const auto started = std::chrono::steady_clock::now();
        const auto response = CurlHttpClient().send(requestFor(url + "/x", 300ms));
        EXPECT_LT(std::chrono::steady_clock::now() - started, 5s) << url;
        ASSERT_FALSE(response) << url;
        EXPECT_EQ(response.error(), expected) << url << ": " << describe(response.error());
    }
}

// Remote hosts are https only, so a proxy sees nothing but a CONNECT: users who need one keep it.
// Loopback traffic is plain http and carries the sign-in's code and tokens: no proxy may see it.
TEST_F(CurlHttpClientTest, OnlyRemoteHostsGoThroughTheEnvironmentsProxy) {
    testing::EnvironmentProxy proxy;
    EXPECT_TRUE(client.send(request("/x")));
    EXPECT_EQ(proxy.connectionCount(), 0);
    // 0.0.0.0 is not a loopback host to the client, yet the kernel would connect it to this machine.
    EXPECT_FALSE(client.send(requestFor("https://0.0.0.0:1/api", 5s)));
    EXPECT_EQ(proxy.connectionCount(), 1);
}

} // namespace
} // namespace gaugewell
