#include "FakeClaudeService.h"
#include "ManualClock.h"
#include "Platform/InMemorySecretStore.h"
#include "ProviderKit/ClaudeOAuthSession.h"
#include "ProviderKit/CurlHttpClient.h"
#include "ProviderKit/Pkce.h"
#include "UsageDomain/JsonValue.h"

#include <condition_variable>
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

std::string stringMember(const std::string& json, std::string_view key) {
    const auto parsed = parseJson(json);
    if (!parsed) {
        return "<not json>";
    }
    const auto* member = parsed->find(key);
    return member && member->stringValue() ? *member->stringValue() : "<missing>";
}

std::vector<std::string> memberNames(const std::string& json) {
    std::vector<std::string> names;
    const auto parsed = parseJson(json);
    if (parsed && parsed->objectValue()) {
        for (const auto& [name, value] : *parsed->objectValue()) {
            names.push_back(name);
        }
    }
    return names;
}

class ClaudeOAuthSessionTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { std::signal(SIGPIPE, SIG_IGN); }

    void TearDown() override {
        for (auto& browser : browsers) {
            browser.join();
        }
    }

    // A browser stand-in: loads the (fake) sign-in page, then follows its redirect to the real loopback
    // listener, as a browser would.
    bool openInBrowser(const std::string& url) {
        std::lock_guard lock(browserMutex);
        openedURLs.push_back(url);
        browsers.emplace_back([this, url] {
            HttpRequest signIn;
            signIn.url = url;
            signIn.timeout = 10s;
            const auto page = http->send(signIn);
            const auto location = fake.lastRedirectLocation();
            if (!page || page->status != 302 || !location) {
                return;
            }
            HttpRequest callback;
            callback.url = *location;
            callback.timeout = 10s;
            const auto answer = http->send(callback);
            std::lock_guard lock(browserMutex);
            callbackStatus = answer ? answer->status : -1;
        });
        return true;
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

    const auto credential = storedCredential();
    ASSERT_TRUE(credential.has_value());
    EXPECT_EQ(credential->accessToken, "fake-access-token-7b1f0c2e");
    EXPECT_EQ(credential->refreshToken, "fake-refresh-token-5d93aa41");
    EXPECT_EQ(credential->expiresAt, addingSeconds(clock.now(), 3600));
    EXPECT_EQ(credential->scopes, (std::vector<std::string>{"org:create_api_key", "user:profile"}));
    EXPECT_TRUE(session->isSignedIn());
    for (auto& browser : browsers) {
        browser.join();
    }
    browsers.clear();
    EXPECT_EQ(callbackStatus, 302); // the browser was sent on to the success page
}

TEST_F(ClaudeOAuthSessionTest, TokenExchangeCarriesCodeVerifierAndState) {
    fake.setAuthorizationCode("code-from-sign-in");
    auto session = makeSession();
    ASSERT_TRUE(session->login().hasValue());

    const auto authorize = fake.server().requests("/cai/oauth/authorize");
    const auto token = fake.server().requests("/v1/oauth/token");
    ASSERT_EQ(authorize.size(), 1u);
    ASSERT_EQ(token.size(), 1u);
    const auto& body = token[0].body;
    EXPECT_EQ(token[0].method, "POST");
    EXPECT_EQ(token[0].header("Content-Type"), "application/json");
    EXPECT_EQ(memberNames(body), (std::vector<std::string>{"grant_type", "code", "redirect_uri", "client_id",
                                                           "code_verifier", "state"}));
    EXPECT_EQ(stringMember(body, "grant_type"), "authorization_code");
    EXPECT_EQ(stringMember(body, "code"), "code-from-sign-in");
    EXPECT_EQ(stringMember(body, "client_id"), "3f6b8e21-7c4d-4a9e-b5f0-2d81c6a9e047");
    EXPECT_EQ(stringMember(body, "redirect_uri"), authorize[0].queryItem("redirect_uri"));
    EXPECT_EQ(stringMember(body, "state"), authorize[0].queryItem("state"));
    const auto verifier = stringMember(body, "code_verifier");
    EXPECT_EQ(verifier.size(), 64u);
    EXPECT_EQ(authorize[0].queryItem("code_challenge"), Pkce::challenge(verifier));
}

TEST_F(ClaudeOAuthSessionTest, AuthorizationURLHasItsItemsInOrderAndEncodedAsAQuery) {
    auto session = makeSession();
    ASSERT_TRUE(session->login().hasValue());
    ASSERT_EQ(openedURLs.size(), 1u);
    const auto& url = openedURLs[0];
    const auto authorize = fake.server().requests("/cai/oauth/authorize").at(0);
    const std::string redirect = *authorize.queryItem("redirect_uri");
    EXPECT_TRUE(redirect.starts_with("http://localhost:") && redirect.ends_with("/callback"))
        << "redirect URI";
    const std::string expected =
        fake.server().baseURL() +
        "/cai/oauth/authorize?code=true&client_id=3f6b8e21-7c4d-4a9e-b5f0-2d81c6a9e047"
        "&response_type=code&redirect_uri=" +
        redirect +
        "&scope=org:create_api_key%20user:profile&code_challenge=" + *authorize.queryItem("code_challenge") +
        "&code_challenge_method=S256&state=" + *authorize.queryItem("state");
    EXPECT_TRUE(url == expected) << "the authorization URL differs from the expected form";
    EXPECT_EQ(authorize.queryItem("state")->size(), 32u);
    EXPECT_EQ(authorize.queryItem("code_challenge")->size(), 43u);
}

TEST_F(ClaudeOAuthSessionTest, AuthorizationURLEscapesWhatAQueryValueMayNotHold) {
    const auto endpoints =
        ClaudeEndpoints::make("https://a.test", "https://b.test", "https://c.test").value();
    const auto url = ClaudeOAuthSession::authorizationURL(
        endpoints, "http://localhost:1/callback?x=1&y=2 z+é", "challenge", "st");
    EXPECT_EQ(url,
              "https://a.test/cai/oauth/authorize?code=true&client_id=3f6b8e21-7c4d-4a9e-b5f0-2d81c6a9e047"
              "&response_type=code&redirect_uri=http://localhost:1/callback?x%3D1%26y%3D2%20z%2B%C3%A9"
              "&scope=org:create_api_key%20user:profile&code_challenge=challenge"
              "&code_challenge_method=S256&state=st");
}

TEST_F(ClaudeOAuthSessionTest, DifferentStateIsRejectedAndNothingIsStored) {
    fake.setStateOverride("not-the-state-we-sent");
    auto session = makeSession();
    const auto result = session->login();
    ASSERT_FALSE(result.hasValue());
    EXPECT_EQ(result.error(), ClaudeOAuthError::stateMismatch);
    EXPECT_EQ(secrets->itemCount(), 0u);
    EXPECT_TRUE(fake.server().requests("/v1/oauth/token").empty());
}

struct ExchangeFailure {
    std::string name;
    FakeClaudeService::TokenScript script;
};

void PrintTo(const ExchangeFailure& failure, std::ostream* out) {
    *out << failure.name;
}

class FailedExchange : public ClaudeOAuthSessionTest,
                       public ::testing::WithParamInterface<ExchangeFailure> {};

TEST_P(FailedExchange, FailsWithTokenExchangeFailedAndStoresNothing) {
    fake.setTokenScript(GetParam().script);
    auto session = makeSession();
    const auto result = session->login();
    ASSERT_FALSE(result.hasValue());
    EXPECT_EQ(result.error(), ClaudeOAuthError::tokenExchangeFailed);
    EXPECT_EQ(secrets->itemCount(), 0u);
}

FakeClaudeService::TokenScript scriptWith(auto change) {
    FakeClaudeService::TokenScript script;
    change(script);
    return script;
}

INSTANTIATE_TEST_SUITE_P(
    ClaudeOAuthSession, FailedExchange,
    ::testing::Values(ExchangeFailure{"Status201", scriptWith([](auto& s) { s.status = 201; })},
                      ExchangeFailure{"Status400", scriptWith([](auto& s) { s.status = 400; })},
                      ExchangeFailure{"NoRefreshToken", scriptWith([](auto& s) { s.refreshToken.reset(); })}),
    [](const auto& info) { return info.param.name; });

TEST_F(ClaudeOAuthSessionTest, UndecodableTokenAnswerFailsTheExchange) {
    fake.server().route("/v1/oauth/token", ScriptedHttpResponse::json(200, R"({"access_token":"a"})"));
    auto session = makeSession();
    EXPECT_EQ(session->login().error(), ClaudeOAuthError::tokenExchangeFailed);
    EXPECT_EQ(secrets->itemCount(), 0u);
}

TEST_F(ClaudeOAuthSessionTest, ExchangeWithoutScopeGetsTheStaticScopes) {
    fake.setTokenScript(scriptWith([](auto& s) { s.scope.reset(); }));
    auto session = makeSession();
    ASSERT_TRUE(session->login().hasValue());
    EXPECT_EQ(storedCredential()->scopes, ClaudeOAuthSession::scopes());
}

TEST_F(ClaudeOAuthSessionTest, BrowserThatCannotOpenFailsTheLogin) {
    std::uint16_t port = 0;
    auto session = makeSession([&](const std::string& url) {
        port = static_cast<std::uint16_t>(std::stoi(url.substr(url.find("localhost:") + 10)));
        return false;
    });
    EXPECT_EQ(session->login().error(), ClaudeOAuthError::browserCouldNotOpen);
    EXPECT_EQ(secrets->itemCount(), 0u);
    // The listener went away with the attempt.
    HttpRequest probe;
    probe.url = "http://127.0.0.1:" + std::to_string(port) + "/callback?code=a&state=b";
    probe.timeout = 2s;
    EXPECT_EQ(http->send(probe).error(), HttpClientError::transportFailed);
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

TEST_F(ClaudeOAuthSessionTest, FailedLoginLeavesTheEarlierCredential) {
    storeCredential("old-access", "old-refresh", 5000);
    fake.setStateOverride("wrong");
    auto session = makeSession();
    EXPECT_EQ(session->login().error(), ClaudeOAuthError::stateMismatch);
    EXPECT_EQ(storedCredential()->accessToken, "old-access");
}

// --- validAccessToken ---

TEST_F(ClaudeOAuthSessionTest, NoCredentialMeansSignedOut) {
    auto session = makeSession();
    EXPECT_FALSE(session->isSignedIn());
    EXPECT_EQ(session->validAccessToken().error(), ClaudeOAuthError::signedOut);
}

TEST_F(ClaudeOAuthSessionTest, StoreFailuresAreStorageFailuresAndNotSignedIn) {
    storeCredential("a", "r", 5000);
    secrets->setFailure(SecretStoreError::unavailable);
    auto session = makeSession();
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
    auto session = makeSession();
    const auto token = session->validAccessToken();
    ASSERT_TRUE(token.hasValue());
    const auto refreshes = fake.server().requests("/v1/oauth/token").size();
    if (GetParam().refreshes) {
        EXPECT_EQ(*token, "fake-access-token-7b1f0c2e");
        EXPECT_EQ(refreshes, 1u);
    } else {
        EXPECT_EQ(*token, "stored-access");
        EXPECT_EQ(refreshes, 0u);
    }
}

INSTANTIATE_TEST_SUITE_P(ClaudeOAuthSession, RefreshMargin,
                         ::testing::Values(MarginCase{301, false}, MarginCase{300.001, false},
                                           MarginCase{300, true}, MarginCase{12, true},
                                           MarginCase{-86400, true}));

TEST_F(ClaudeOAuthSessionTest, RefreshSendsStoredTokenAndScopesAndStoresTheAnswer) {
    storeCredential("stored-access", "stored-refresh", 10, {"user:profile", "org:create_api_key"});
    auto session = makeSession();
    ASSERT_TRUE(session->validAccessToken().hasValue());
    const auto request = fake.server().requests("/v1/oauth/token").at(0);
    EXPECT_EQ(memberNames(request.body),
              (std::vector<std::string>{"grant_type", "refresh_token", "client_id", "scope"}));
    EXPECT_EQ(stringMember(request.body, "grant_type"), "refresh_token");
    EXPECT_EQ(stringMember(request.body, "refresh_token"), "stored-refresh");
    EXPECT_EQ(stringMember(request.body, "scope"), "user:profile org:create_api_key");
    const auto stored = storedCredential();
    EXPECT_EQ(stored->accessToken, "fake-access-token-7b1f0c2e");
    EXPECT_EQ(stored->refreshToken, "fake-refresh-token-5d93aa41");
    EXPECT_EQ(stored->expiresAt, addingSeconds(clock.now(), 3600));
    // The fresh token is now used without another refresh.
    EXPECT_EQ(*session->validAccessToken(), "fake-access-token-7b1f0c2e");
    EXPECT_EQ(fake.server().requests("/v1/oauth/token").size(), 1u);
}

TEST_F(ClaudeOAuthSessionTest, RefreshWithoutNewRefreshTokenOrScopeKeepsOldTokenAndUsesStaticScopes) {
    storeCredential("stored-access", "stored-refresh", 0, {"custom"});
    fake.setTokenScript(scriptWith([](auto& s) {
        s.refreshToken.reset();
        s.scope.reset();
    }));
    auto session = makeSession();
    ASSERT_TRUE(session->validAccessToken().hasValue());
    const auto stored = storedCredential();
    EXPECT_EQ(stored->refreshToken, "stored-refresh");
    EXPECT_EQ(stored->scopes, ClaudeOAuthSession::scopes());
}

TEST_F(ClaudeOAuthSessionTest, FailedRefreshKeepsTheOldCredential) {
    storeCredential("stored-access", "stored-refresh", 0);
    const auto before = storedCredential();
    fake.setTokenScript(scriptWith([](auto& s) { s.status = 201; }));
    auto session = makeSession();
    EXPECT_EQ(session->validAccessToken().error(), ClaudeOAuthError::tokenRefreshFailed);
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
        EXPECT_EQ(*token, "fake-access-token-7b1f0c2e");
    }
    EXPECT_EQ(fake.server().requests("/v1/oauth/token").size(), 1u);
}

// --- logout ---

TEST_F(ClaudeOAuthSessionTest, LogoutRevokesTheRefreshTokenAndDeletes) {
    storeCredential("stored-access", "stored-refresh", 5000);
    auto session = makeSession();
    ASSERT_TRUE(session->logout().hasValue());
    EXPECT_EQ(secrets->itemCount(), 0u);
    const auto revocations = fake.server().requests("/v1/oauth/token/revoke");
    ASSERT_EQ(revocations.size(), 1u);
    EXPECT_EQ(revocations[0].body, R"({"token":"stored-refresh","token_type_hint":"refresh_token",)"
                                   R"("client_id":"3f6b8e21-7c4d-4a9e-b5f0-2d81c6a9e047"})");
    EXPECT_FALSE(session->isSignedIn());
}

TEST_F(ClaudeOAuthSessionTest, LogoutWithTheRevocationEndpointDownStillDeletes) {
    storeCredential("stored-access", "stored-refresh", 5000);
    fake.server().route("/v1/oauth/token/revoke", ScriptedHttpResponse::withBehavior(
                                                      ScriptedHttpResponse::Behavior::closeWithoutAnswer));
    auto session = makeSession();
    ASSERT_TRUE(session->logout().hasValue());
    EXPECT_EQ(secrets->itemCount(), 0u);
}

TEST_F(ClaudeOAuthSessionTest, LogoutWithoutCredentialSendsNothing) {
    auto session = makeSession();
    EXPECT_TRUE(session->logout().hasValue());
    EXPECT_TRUE(fake.server().requests().empty());
}

TEST_F(ClaudeOAuthSessionTest, LogoutTreatsUnreadableDataAsNoCredentialButFailsWhenDeleteFails) {
    ASSERT_FALSE(secrets->save("app.gaugewell.claude.oauth", "primary", "garbage"));
    auto session = makeSession();
    EXPECT_TRUE(session->logout().hasValue());
    EXPECT_EQ(secrets->itemCount(), 0u);
    EXPECT_TRUE(fake.server().requests().empty());

    secrets->setFailure(SecretStoreError::failed);
    EXPECT_EQ(session->logout().error(), ClaudeOAuthError::credentialStorageFailed);
}

} // namespace
} // namespace gaugewell
