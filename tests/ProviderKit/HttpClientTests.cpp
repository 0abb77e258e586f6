#include "LocalHttpServer.h"
#include "ProviderKit/CurlHttpClient.h"

#include <csignal>
#include <gtest/gtest.h>
#include <ostream>

namespace gaugewell {
namespace {

using testing::LocalHttpServer;
using testing::ScriptedHttpResponse;
using namespace std::chrono_literals;

HttpRequest absoluteRequest(std::string url, std::chrono::milliseconds timeout = 5s) {
    HttpRequest request;
    request.url = std::move(url);
    request.timeout = timeout;
    return request;
}

class CurlHttpClientTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { std::signal(SIGPIPE, SIG_IGN); }

    HttpRequest request(std::string path) { return absoluteRequest(server.baseURL() + path); }

    LocalHttpServer server;
    CurlHttpClient client;
};

TEST_F(CurlHttpClientTest, GetSendsHeadersAndReturnsStatusAndBody) {
    server.route("/data", ScriptedHttpResponse::json(200, R"({"ok":true})"));
    auto get = request("/data?x=1");
    get.headers = {{"Accept", "application/json"}, {"anthropic-beta", "oauth-2025-04-20"}};
    const auto response = client.send(get);
    ASSERT_TRUE(response.hasValue());
    EXPECT_EQ(response->status, 200);
    EXPECT_EQ(response->body, R"({"ok":true})");
    const auto recorded = server.requests("/data");
    ASSERT_EQ(recorded.size(), 1u);
    EXPECT_EQ(recorded[0].method, "GET");
    EXPECT_EQ(recorded[0].query, "x=1");
    EXPECT_EQ(recorded[0].header("accept"), "application/json");
    EXPECT_EQ(recorded[0].header("anthropic-beta"), "oauth-2025-04-20");
    EXPECT_FALSE(recorded[0].header("Cookie").has_value());
    EXPECT_TRUE(recorded[0].body.empty());
}

TEST_F(CurlHttpClientTest, PostSendsTheBodyExactly) {
    server.route("/token", ScriptedHttpResponse::json(201, "{}"));
    auto post = request("/token");
    post.method = "POST";
    post.headers = {{"Content-Type", "application/json"}};
    post.body = std::string(5000, 'x'); // large enough that curl would otherwise ask for 100-continue
    const auto response = client.send(post);
    ASSERT_TRUE(response.hasValue());
    EXPECT_EQ(response->status, 201);
    const auto recorded = server.requests("/token");
    ASSERT_EQ(recorded.size(), 1u);
    EXPECT_EQ(recorded[0].method, "POST");
    EXPECT_EQ(recorded[0].body, post.body);
    EXPECT_FALSE(recorded[0].header("Expect").has_value());
}

TEST_F(CurlHttpClientTest, RedirectsAndCookiesAreNotFollowed) {
    server.route("/moved", ScriptedHttpResponse{302,
                                                {{"Location", server.baseURL() + "/target"},
                                                 {"Set-Cookie", "session=abc; Path=/"}},
                                                "",
                                                ScriptedHttpResponse::Behavior::respond});
    const auto first = client.send(request("/moved"));
    ASSERT_TRUE(first.hasValue());
    EXPECT_EQ(first->status, 302);
    EXPECT_TRUE(server.requests("/target").empty());
    ASSERT_TRUE(client.send(request("/moved")).hasValue());
    for (const auto& recorded : server.requests("/moved")) {
        EXPECT_FALSE(recorded.header("Cookie").has_value());
    }
}

TEST_F(CurlHttpClientTest, BodiesOverTheCapAreRefused) {
    server.route("/big", ScriptedHttpResponse::json(200, std::string(100'000, 'a')));
    auto big = request("/big");
    big.maximumResponseBytes = 99'999;
    EXPECT_EQ(client.send(big).error(), HttpClientError::responseTooLarge);
    big.maximumResponseBytes = 100'000;
    EXPECT_EQ(client.send(big)->body.size(), 100'000u);
}

TEST_F(CurlHttpClientTest, ServersThatDoNotAnswerProperlyFailWithinTheTimeOut) {
    using Behavior = ScriptedHttpResponse::Behavior;
    const struct {
        Behavior behavior;
        std::string raw;
        HttpClientError expected;
    } cases[] = {
        {Behavior::neverAnswer, "", HttpClientError::timedOut},
        {Behavior::raw, "SSH-2.0-OpenSSH_9.2\r\nnot http at all\r\n", HttpClientError::invalidResponse},
        {Behavior::closeWithoutAnswer, "", HttpClientError::transportFailed}};
    for (const auto& scripted : cases) {
        SCOPED_TRACE(static_cast<int>(scripted.behavior));
        server.route("/x", ScriptedHttpResponse::withBehavior(scripted.behavior, scripted.raw));
        auto bad = request("/x");
        bad.timeout = 300ms;
        const auto started = std::chrono::steady_clock::now();
        const auto response = client.send(bad);
        EXPECT_LT(std::chrono::steady_clock::now() - started, 5s);
        ASSERT_FALSE(response.hasValue());
        EXPECT_EQ(response.error(), scripted.expected);
    }
}

TEST_F(CurlHttpClientTest, RefusedPortIsATransportFailure) {
    std::string closedURL;
    {
        LocalHttpServer gone;
        closedURL = gone.baseURL() + "/x";
    }
    EXPECT_EQ(client.send(absoluteRequest(closedURL)).error(), HttpClientError::transportFailed);
}

struct UrlCase {
    std::string url;
    HttpClientError expected;
};

void PrintTo(const UrlCase& url, std::ostream* out) {
    *out << url.url;
}

class RefusedURL : public ::testing::TestWithParam<UrlCase> {};

// Refused before any connection is attempted (none of these hosts is reachable from here anyway).
TEST_P(RefusedURL, FailsWithoutSending) {
    const auto response = CurlHttpClient().send(absoluteRequest(GetParam().url, 2s));
    ASSERT_FALSE(response.hasValue());
    EXPECT_EQ(response.error(), GetParam().expected) << GetParam().url;
}

INSTANTIATE_TEST_SUITE_P(CurlHttpClient, RefusedURL,
                         ::testing::Values(UrlCase{"http://example.com/api", HttpClientError::insecureURL},
                                           UrlCase{"http://192.168.1.1/", HttpClientError::insecureURL},
                                           UrlCase{"ftp://127.0.0.1/", HttpClientError::invalidURL},
                                           UrlCase{"file:///etc/passwd", HttpClientError::invalidURL},
                                           UrlCase{"https://user:pw@example.com/",
                                                   HttpClientError::invalidURL},
                                           UrlCase{"no scheme", HttpClientError::invalidURL},
                                           UrlCase{"", HttpClientError::invalidURL}));

TEST_F(CurlHttpClientTest, HeadersThatWouldSplitTheRequestAreRefused) {
    server.route("/x", ScriptedHttpResponse::json(200, "{}"));
    auto injected = request("/x");
    injected.headers = {{"Accept", "application/json\r\nX-Injected: 1"}};
    EXPECT_EQ(client.send(injected).error(), HttpClientError::invalidRequest);
    auto badMethod = request("/x");
    badMethod.method = "GET /other HTTP/1.1\r\n";
    EXPECT_EQ(client.send(badMethod).error(), HttpClientError::invalidRequest);
    EXPECT_TRUE(server.requests().empty());
}

} // namespace
} // namespace gaugewell
