#include "FakeClaudeService.h"
#include "ManualClock.h"
#include "Platform/InMemorySecretStore.h"
#include "ProviderKit/ClaudeOAuthSession.h"
#include "ProviderKit/CurlHttpClient.h"
#include "ProviderKit/Pkce.h"
#include "UsageDomain/JsonValue.h"

#include <csignal>
#include <future>
#include <gtest/gtest.h>
#include <latch>
#include <ostream>
#include <thread>

namespace gaugewell {
namespace {

using testing::FakeClaudeService;
using testing::ScriptedHttpResponse;
using namespace std::chrono_literals;

const std::string clientId = "3f6b8e21-7c4d-4a9e-b5f0-2d81c6a9e047";
const std::string issuedAccess = "fake-access-token-7b1f0c2e";

using Members = std::vector<std::pair<std::string, std::string>>;

// A JSON object body's members in order, each with its string value ("" for any other kind).
Members stringMembers(const std::string& json) {
    Members members;
    const auto parsed = parseJson(json);
    if (parsed && parsed->objectValue()) {
        for (const auto& [name, value] : *parsed->objectValue()) {
            members.emplace_back(name, value.stringValue() ? *value.stringValue() : "");
        }
    }
    return members;
}

HttpRequest getRequest(std::string url, std::chrono::milliseconds timeout) {
    HttpRequest request;
    request.url = std::move(url);
    request.timeout = timeout;
    return request;
}

FakeClaudeService::TokenScript scriptWith(auto change) {
    FakeClaudeService::TokenScript script;
    change(script);
    return script;
}

class ClaudeOAuthSessionTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { std::signal(SIGPIPE, SIG_IGN); }
    void TearDown() override { joinBrowsers(); }

    // A browser stand-in: loads the (fake) sign-in page, then follows its redirect to the real loopback
    // listener, as a browser would.
    bool openInBrowser(const std::string& url) {
        std::lock_guard lock(browserMutex);
        openedURLs.push_back(url);
        browsers.emplace_back([this, url] {
            const auto page = http->send(getRequest(url, 10s));
            const auto location = fake.lastRedirectLocation();
            if (!page || page->status != 302 || !location) {
                return;
            }
            const auto answer = http->send(getRequest(*location, 10s));
            std::lock_guard lock(browserMutex);
            callbackStatus = answer ? answer->status : -1;
        });
        return true;
    }

    void joinBrowsers() {
        for (auto& browser : browsers) {
            browser.join();
        }
        browsers.clear();
    }

    std::unique_ptr<ClaudeOAuthSession> makeSession(ClaudeOAuthSession::BrowserOpener opener = {}) {
        if (!opener) {
            opener = [this](const std::string& url) { return openInBrowser(url); };
        }
        return std::make_unique<ClaudeOAuthSession>(ClaudeCredentialStore(secrets), http, fake.endpoints(),
                                                    std::move(opener), [this] { return clock.now(); });
    }

    void storeCredential(std::string access, std::string refresh, double secondsLeft,
                         std::vector<std::string> scopes = {"user:profile"}) {
        ASSERT_TRUE(ClaudeCredentialStore(secrets)
                        .save({std::move(access), std::move(refresh), addingSeconds(clock.now(), secondsLeft),
                               std::move(scopes)})
                        .hasValue());
    }

    std::optional<ClaudeOAuthCredential> storedCredential() {
        auto loaded = ClaudeCredentialStore(secrets).load();
        return loaded ? *loaded : std::nullopt;
    }

    // What the fake token endpoint issues by default.
    ClaudeOAuthCredential issuedCredential() const {
        return {issuedAccess,
                "fake-refresh-token-5d93aa41",
                addingSeconds(clock.now(), 3600),
                {"org:create_api_key", "user:profile"}};
    }

    std::vector<testing::RecordedHttpRequest> tokenRequests() {
        return fake.server().requests("/v1/oauth/token");
    }

    FakeClaudeService fake;
    std::shared_ptr<InMemorySecretStore> secrets = std::make_shared<InMemorySecretStore>();
    std::shared_ptr<CurlHttpClient> http = std::make_shared<CurlHttpClient>();
    testing::ManualClock clock;

    std::mutex browserMutex;
    std::vector<std::string> openedURLs;
    std::vector<std::thread> browsers;
    int callbackStatus = 0;
};

// --- login ---

TEST_F(ClaudeOAuthSessionTest, LoginExchangesTheCodeAndStoresTheCredential) {
    auto session = makeSession();
    ASSERT_TRUE(session->login().hasValue());
    EXPECT_EQ(storedCredential(), issuedCredential());
    EXPECT_TRUE(session->isSignedIn());
    joinBrowsers();
    EXPECT_EQ(callbackStatus, 302); // the browser was sent on to the success page
}

TEST_F(ClaudeOAuthSessionTest, AuthorizationURLIsInOrderAndTheExchangeCarriesCodeVerifierAndState) {
    fake.setAuthorizationCode("code-from-sign-in");
    auto session = makeSession();
    ASSERT_TRUE(session->login().hasValue());
    const auto authorize = fake.server().requests("/cai/oauth/authorize");
    const auto token = tokenRequests();
    ASSERT_EQ(authorize.size(), 1u);
    ASSERT_EQ(token.size(), 1u);
    ASSERT_EQ(openedURLs.size(), 1u);
    const auto redirect = authorize[0].queryItem("redirect_uri").value_or("");
    const auto state = authorize[0].queryItem("state").value_or("");
    const auto challenge = authorize[0].queryItem("code_challenge").value_or("");
    EXPECT_TRUE(redirect.starts_with("http://localhost:") && redirect.ends_with("/callback"))
        << "redirect URI";
    EXPECT_EQ(state.size(), 32u);
    EXPECT_EQ(challenge.size(), 43u);
    // Compared without printing: the URL holds the state and the challenge.
    EXPECT_TRUE(openedURLs[0] == fake.server().baseURL() + "/cai/oauth/authorize?code=true&client_id=" +
                                     clientId + "&response_type=code&redirect_uri=" + redirect +
                                     "&scope=org:create_api_key%20user:profile&code_challenge=" + challenge +
                                     "&code_challenge_method=S256&state=" + state)
        << "the authorization URL differs from the expected form";

    EXPECT_EQ(token[0].method, "POST");
    EXPECT_EQ(token[0].header("Content-Type"), "application/json");
    const auto members = stringMembers(token[0].body);
    ASSERT_EQ(members.size(), 6u);
    const auto verifier = members[4].second;
    EXPECT_EQ(members, (Members{{"grant_type", "authorization_code"},
                                {"code", "code-from-sign-in"},
                                {"redirect_uri", redirect},
                                {"client_id", clientId},
                                {"code_verifier", verifier},
                                {"state", state}}));
    EXPECT_EQ(verifier.size(), 64u);
    EXPECT_EQ(challenge, Pkce::challenge(verifier));
}

TEST(ClaudeOAuthSession, AuthorizationURLEscapesWhatAQueryValueMayNotHold) {
    const auto endpoints =
        ClaudeEndpoints::make("https://a.test", "https://b.test", "https://c.test").value();
    EXPECT_EQ(ClaudeOAuthSession::authorizationURL(endpoints, "http://localhost:1/callback?x=1&y=2 z+é",
                                                   "challenge", "st"),
              "https://a.test/cai/oauth/authorize?code=true&client_id=" + clientId +
                  "&response_type=code&redirect_uri=http://localhost:1/callback?x%3D1%26y%3D2%20z%2B%C3%A9"
                  "&scope=org:create_api_key%20user:profile&code_challenge=challenge"
                  "&code_challenge_method=S256&state=st");
}

TEST_F(ClaudeOAuthSessionTest, DifferentStateIsRejectedBeforeTheExchangeAndStoresNothing) {
    storeCredential("old-access", "old-refresh", 5000);
    const auto before = storedCredential();
    fake.setStateOverride("not-the-state-we-sent");
    auto session = makeSession();
    EXPECT_EQ(session->login().error(), ClaudeOAuthError::stateMismatch);
    EXPECT_TRUE(tokenRequests().empty());
    EXPECT_EQ(secrets->itemCount(), 1u);
    EXPECT_EQ(storedCredential(), before);
}

struct ExchangeFailure {
    std::string name;
    FakeClaudeService::TokenScript script;
    std::optional<std::string> rawAnswer = std::nullopt; // a 200 answer with this body instead of the script
};

void PrintTo(const ExchangeFailure& failure, std::ostream* out) {
    *out << failure.name;
}

class FailedExchange : public ClaudeOAuthSessionTest,
                       public ::testing::WithParamInterface<ExchangeFailure> {};

TEST_P(FailedExchange, FailsWithTokenExchangeFailedAndStoresNothing) {
    if (GetParam().rawAnswer) {
        fake.server().route("/v1/oauth/token", ScriptedHttpResponse::json(200, *GetParam().rawAnswer));
    } else {
        fake.setTokenScript(GetParam().script);
    }
    auto session = makeSession();
    EXPECT_EQ(session->login().error(), ClaudeOAuthError::tokenExchangeFailed);
    EXPECT_EQ(secrets->itemCount(), 0u);
}

INSTANTIATE_TEST_SUITE_P(
    ClaudeOAuthSession, FailedExchange,
    ::testing::Values(ExchangeFailure{"Status201", scriptWith([](auto& s) { s.status = 201; })},
                      ExchangeFailure{"Status400", scriptWith([](auto& s) { s.status = 400; })},
                      ExchangeFailure{"NoRefreshToken", scriptWith([](auto& s) { s.refreshToken.reset(); })},
                      ExchangeFailure{"Undecodable", {}, R"({"access_token":"a"})"}),
    [](const auto& info) { return info.param.name; });

TEST_F(ClaudeOAuthSessionTest, BrowserThatCannotOpenFailsTheLoginAndClosesTheListener) {
    std::uint16_t port = 0;
    auto session = makeSession([&](const std::string& url) {
        port = static_cast<std::uint16_t>(std::stoi(url.substr(url.find("localhost:") + 10)));
        return false;
    });
    EXPECT_EQ(session->login().error(), ClaudeOAuthError::browserCouldNotOpen);
    EXPECT_EQ(secrets->itemCount(), 0u);
    const auto probe =
        http->send(getRequest("http://127.0.0.1:" + std::to_string(port) + "/callback?code=a&state=b", 2s));
    EXPECT_EQ(probe.error(), HttpClientError::transportFailed);
}

TEST_F(ClaudeOAuthSessionTest, StorageFailureAfterTheExchangeIsReported) {
    auto session = makeSession();
    secrets->setFailure(SecretStoreError::locked);
    EXPECT_EQ(session->login().error(), ClaudeOAuthError::credentialStorageFailed);
}

TEST_F(ClaudeOAuthSessionTest, CancelEndsAWaitingLoginWithoutStoringAnything) {
    std::promise<void> browserOpened;
    auto session = makeSession([&](const std::string&) {
        browserOpened.set_value();
        return true; // a browser that never comes back
    });
    auto login = std::async(std::launch::async, [&] { return session->login(); });
    ASSERT_EQ(browserOpened.get_future().wait_for(10s), std::future_status::ready);
    session->cancelLogin();
    ASSERT_EQ(login.wait_for(10s), std::future_status::ready);
    EXPECT_EQ(login.get().error(), ClaudeOAuthError::callbackFailed);
    EXPECT_EQ(secrets->itemCount(), 0u);
}

TEST_F(ClaudeOAuthSessionTest, CancelWithoutALoginDoesNotAffectTheNextOne) {
    auto session = makeSession();
    session->cancelLogin();
    EXPECT_TRUE(session->login().hasValue());
}

// --- validAccessToken ---

TEST_F(ClaudeOAuthSessionTest, NoCredentialIsSignedOutAndAFailingStoreIsAStorageFailure) {
    auto session = makeSession();
    EXPECT_FALSE(session->isSignedIn());
    EXPECT_EQ(session->validAccessToken().error(), ClaudeOAuthError::signedOut);
    storeCredential("a", "r", 5000);
    secrets->setFailure(SecretStoreError::unavailable);
    EXPECT_FALSE(session->isSignedIn());
    EXPECT_EQ(session->validAccessToken().error(), ClaudeOAuthError::credentialStorageFailed);
}

struct MarginCase {
    double secondsLeft;
    bool refreshes;
};

void PrintTo(const MarginCase& margin, std::ostream* out) {
    *out << margin.secondsLeft << " s left";
}

class RefreshMargin : public ClaudeOAuthSessionTest, public ::testing::WithParamInterface<MarginCase> {};

TEST_P(RefreshMargin, RefreshesOnlyWithin300Seconds) {
    storeCredential("stored-access", "stored-refresh", GetParam().secondsLeft);
    const auto token = makeSession()->validAccessToken();
    ASSERT_TRUE(token.hasValue());
    EXPECT_EQ(*token, GetParam().refreshes ? issuedAccess : "stored-access");
    EXPECT_EQ(tokenRequests().size(), GetParam().refreshes ? 1u : 0u);
}

INSTANTIATE_TEST_SUITE_P(ClaudeOAuthSession, RefreshMargin,
                         ::testing::Values(MarginCase{301, false}, MarginCase{300.001, false},
                                           MarginCase{300, true}, MarginCase{12, true},
                                           MarginCase{-86400, true}));

TEST_F(ClaudeOAuthSessionTest, RefreshSendsStoredTokenAndScopesAndStoresTheAnswer) {
    storeCredential("stored-access", "stored-refresh", 10, {"user:profile", "org:create_api_key"});
    auto session = makeSession();
    ASSERT_TRUE(session->validAccessToken().hasValue());
    EXPECT_EQ(stringMembers(tokenRequests().at(0).body),
              (Members{{"grant_type", "refresh_token"},
                       {"refresh_token", "stored-refresh"},
                       {"client_id", clientId},
                       {"scope", "user:profile org:create_api_key"}}));
    EXPECT_EQ(storedCredential(), issuedCredential());
    // The fresh token is now used without another refresh.
    EXPECT_EQ(*session->validAccessToken(), issuedAccess);
    EXPECT_EQ(tokenRequests().size(), 1u);
}

TEST_F(ClaudeOAuthSessionTest, RefreshWithoutNewRefreshTokenOrScopeKeepsOldTokenAndUsesStaticScopes) {
    storeCredential("stored-access", "stored-refresh", 0, {"custom"});
    fake.setTokenScript(scriptWith([](auto& s) {
        s.refreshToken.reset();
        s.scope.reset();
    }));
    ASSERT_TRUE(makeSession()->validAccessToken().hasValue());
    EXPECT_EQ(storedCredential()->refreshToken, "stored-refresh");
    EXPECT_EQ(storedCredential()->scopes, ClaudeOAuthSession::scopes());
}

TEST_F(ClaudeOAuthSessionTest, FailedRefreshKeepsTheOldCredential) {
    storeCredential("stored-access", "stored-refresh", 0);
    const auto before = storedCredential();
    fake.setTokenScript(scriptWith([](auto& s) { s.status = 201; }));
    EXPECT_EQ(makeSession()->validAccessToken().error(), ClaudeOAuthError::tokenRefreshFailed);
    EXPECT_EQ(storedCredential(), before);
}

TEST_F(ClaudeOAuthSessionTest, ConcurrentCallersShareOneRefresh) {
    storeCredential("stored-access", "stored-refresh", 0);
    auto session = makeSession();
    constexpr int callers = 4;
    std::latch ready(callers);
    std::vector<std::future<Expected<std::string, ClaudeOAuthError>>> results;
    for (int index = 0; index < callers; ++index) {
        results.push_back(std::async(std::launch::async, [&] {
            ready.arrive_and_wait();
            return session->validAccessToken();
        }));
    }
    for (auto& result : results) {
        const auto token = result.get();
        ASSERT_TRUE(token.hasValue());
        EXPECT_EQ(*token, issuedAccess);
    }
    EXPECT_EQ(tokenRequests().size(), 1u);
}

// --- logout ---

TEST_F(ClaudeOAuthSessionTest, LogoutRevokesTheRefreshTokenAndDeletesEvenWhenRevocationIsDown) {
    storeCredential("stored-access", "stored-refresh", 5000);
    auto session = makeSession();
    ASSERT_TRUE(session->logout().hasValue());
    EXPECT_EQ(secrets->itemCount(), 0u);
    EXPECT_FALSE(session->isSignedIn());
    const auto revocations = fake.server().requests("/v1/oauth/token/revoke");
    ASSERT_EQ(revocations.size(), 1u);
    EXPECT_EQ(revocations[0].body,
              R"({"token":"stored-refresh","token_type_hint":"refresh_token","client_id":")" + clientId +
                  "\"}");

    storeCredential("stored-access", "stored-refresh", 5000);
    fake.server().route("/v1/oauth/token/revoke", ScriptedHttpResponse::withBehavior(
                                                      ScriptedHttpResponse::Behavior::closeWithoutAnswer));
    ASSERT_TRUE(session->logout().hasValue());
    EXPECT_EQ(secrets->itemCount(), 0u);
}

TEST_F(ClaudeOAuthSessionTest, LogoutTreatsUnreadableDataAsNoCredentialButFailsWhenDeleteFails) {
    ASSERT_FALSE(secrets->save("app.gaugewell.claude.oauth", "primary", "garbage"));
    auto session = makeSession();
    EXPECT_TRUE(session->logout().hasValue());
    EXPECT_EQ(secrets->itemCount(), 0u);
    EXPECT_TRUE(session->logout().hasValue()); // nothing stored at all
    EXPECT_TRUE(fake.server().requests().empty());

    secrets->setFailure(SecretStoreError::failed);
    EXPECT_EQ(session->logout().error(), ClaudeOAuthError::credentialStorageFailed);
}

} // namespace
} // namespace gaugewell
