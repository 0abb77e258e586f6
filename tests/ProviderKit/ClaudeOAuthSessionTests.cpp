#include "BoundedSignIn.h"
#include "FakeClaudeService.h"
#include "ManualClock.h"
#include "Platform/InMemorySecretStore.h"
#include "ProviderKit/ClaudeSignIn/ClaudeOAuthSession.h"
#include "ProviderKit/ClaudeSignIn/Pkce.h"
#include "ProviderKit/Http/CurlHttpClient.h"
#include "UsageDomain/JsonValue.h"

#include <future>
#include <gtest/gtest.h>
#include <latch>

namespace gaugewell {
namespace {

using testing::FakeClaudeService;
using testing::HttpAnswer;
using namespace std::chrono_literals;

const std::string clientId = "3f6b8e21-7c4d-4a9e-b5f0-2d81c6a9e047";
const std::string issuedAccess = "fake-access-token-7b1f0c2e";

HttpRequest getRequest(std::string url) {
    HttpRequest request;
    request.url = std::move(url);
    return request;
}

class ClaudeOAuthSessionTest : public ::testing::Test {
protected:
    // A browser stand-in: loads the (fake) sign-in page, then follows its redirect to the real loopback
    // listener, as a browser would. Called on the signing-in thread.
    bool openInBrowser(const std::string& url) {
        openedURLs.push_back(url);
        browsers.push_back(std::async(std::launch::async, [this, url]() -> long {
            const auto page = http->send(getRequest(url));
            const auto location = fake.lastRedirectLocation();
            const auto answer = page && location ? http->send(getRequest(*location)) : page;
            return answer ? answer->status : -1;
        }));
        return true;
    }

    std::unique_ptr<ClaudeOAuthSession> makeSession(ClaudeOAuthSession::BrowserOpener opener = {}) {
        if (!opener) {
            opener = [this](const std::string& url) { return openInBrowser(url); };
        }
        return std::make_unique<ClaudeOAuthSession>(ClaudeCredentialStore(secrets), http, fake.endpoints(),
                                                    std::move(opener), [this] { return clock.now(); });
    }

    Status<ClaudeOAuthError> login(ClaudeOAuthSession& session) {
        return testing::signInWithin(session, 20s);
    }

    void storeCredential(double secondsLeft, std::vector<std::string> scopes = {"user:profile"}) {
        ASSERT_TRUE(ClaudeCredentialStore(secrets).save(
            {"stored-access", "stored-refresh", addingSeconds(clock.now(), secondsLeft), std::move(scopes)}));
    }

    std::optional<ClaudeOAuthCredential> storedCredential() {
        return ClaudeCredentialStore(secrets).load().value();
    }

    // What the fake token endpoint issues by default.
    ClaudeOAuthCredential issuedCredential() const {
        return {issuedAccess,
                "fake-refresh-token-5d93aa41",
                addingSeconds(clock.now(), 3600),
                {"org:create_api_key", "user:profile"}};
    }

    std::vector<httplib::Request> tokenRequests() { return fake.server().requests("/v1/oauth/token"); }

    FakeClaudeService fake;
    std::shared_ptr<InMemorySecretStore> secrets = std::make_shared<InMemorySecretStore>();
    std::shared_ptr<CurlHttpClient> http = std::make_shared<CurlHttpClient>();
    testing::ManualClock clock;
    std::vector<std::string> openedURLs;
    std::vector<std::future<long>> browsers; // each gives the status the loopback listener answered with
};

// --- login ---

TEST_F(ClaudeOAuthSessionTest, LoginSendsTheAuthorizationExchangesTheCodeAndStoresTheCredential) {
    fake.setAuthorizationCode("code-from-sign-in");
    auto session = makeSession();
    const auto signedIn = login(*session);
    ASSERT_TRUE(signedIn) << describe(signedIn.error());
    EXPECT_EQ(storedCredential(), issuedCredential());
    EXPECT_TRUE(session->isSignedIn());

    const auto authorize = fake.server().requests("/cai/oauth/authorize");
    const auto token = tokenRequests();
    ASSERT_EQ(authorize.size(), 1u);
    ASSERT_EQ(token.size(), 1u);
    const auto redirect = authorize[0].get_param_value("redirect_uri");
    const auto state = authorize[0].get_param_value("state");
    const auto challenge = authorize[0].get_param_value("code_challenge");
    EXPECT_TRUE(redirect.starts_with("http://localhost:") && redirect.ends_with("/callback"));
    // Compared without printing: the URL holds the state and the challenge. Its form has its own test.
    EXPECT_TRUE(openedURLs.at(0) ==
                ClaudeOAuthSession::authorizationURL(fake.endpoints(), redirect, challenge, state))
        << "the authorization URL differs from the expected form";

    EXPECT_EQ(token[0].get_header_value("Content-Type"), "application/json");
    const auto verifier = *parseJson(token[0].body).value().find("code_verifier")->stringValue();
    EXPECT_TRUE(token[0].body ==
                R"({"grant_type":"authorization_code","code":"code-from-sign-in","redirect_uri":")" +
                    redirect + R"(","client_id":")" + clientId + R"(","code_verifier":")" + verifier +
                    R"(","state":")" + state + "\"}")
        << "the exchange body differs from the expected form";
    EXPECT_EQ(state.size(), 32u);
    EXPECT_EQ(verifier.size(), 64u);
    EXPECT_TRUE(challenge == Pkce::challenge(verifier));
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
    storeCredential(5000);
    const auto before = storedCredential();
    fake.setStateOverride("not-the-state-we-sent");
    EXPECT_EQ(login(*makeSession()).error(), ClaudeOAuthError::stateMismatch);
    EXPECT_TRUE(tokenRequests().empty());
    EXPECT_EQ(storedCredential(), before);
}

TEST_F(ClaudeOAuthSessionTest, FailedExchangeStoresNothing) {
    const struct {
        const char* name;
        HttpAnswer answer;
    } cases[] = {
        {"201", HttpAnswer{201, R"({"access_token":"a","refresh_token":"r","expires_in":60})"}},
        {"no refresh token", HttpAnswer{200, R"({"access_token":"a","expires_in":60})"}},
        {"undecodable", HttpAnswer{200, R"({"access_token":"a"})"}},
    };
    for (const auto& [name, answer] : cases) {
        fake.server().route("/v1/oauth/token", answer);
        EXPECT_EQ(login(*makeSession()).error(), ClaudeOAuthError::tokenExchangeFailed) << name;
        EXPECT_EQ(secrets->itemCount(), 0u) << name;
    }
}

TEST_F(ClaudeOAuthSessionTest, BrowserThatCannotOpenFailsTheLoginAndClosesTheListener) {
    std::string callbackURL;
    auto session = makeSession([&](const std::string& url) {
        const auto port = url.substr(url.find("localhost:") + 10);
        callbackURL = "http://127.0.0.1:" + port.substr(0, port.find('/')) + "/callback?code=a&state=b";
        return false;
    });
    EXPECT_EQ(session->login().error(), ClaudeOAuthError::browserCouldNotOpen);
    EXPECT_EQ(secrets->itemCount(), 0u);
    EXPECT_EQ(http->send(getRequest(callbackURL)).error(), HttpClientError::transportFailed);
}

TEST_F(ClaudeOAuthSessionTest, StorageFailureAfterTheExchangeIsReported) {
    secrets->setFailure(SecretStoreError::locked);
    EXPECT_EQ(login(*makeSession()).error(), ClaudeOAuthError::credentialStorageFailed);
}

TEST_F(ClaudeOAuthSessionTest, ANewSignInAfterACancelledOneSucceeds) {
    std::promise<void> firstBrowserOpened;
    int opened = 0;
    auto session = makeSession([&](const std::string& url) {
        if (++opened == 1) {
            firstBrowserOpened.set_value();
            return true; // a browser that never comes back
        }
        return openInBrowser(url);
    });
    session->cancelLogin(); // with no sign-in running: no effect on the next one
    auto cancelled = std::async(std::launch::async, [&] { return session->login(); });
    ASSERT_EQ(firstBrowserOpened.get_future().wait_for(10s), std::future_status::ready);
    session->cancelLogin();
    ASSERT_EQ(cancelled.wait_for(10s), std::future_status::ready);
    EXPECT_EQ(cancelled.get().error(), ClaudeOAuthError::callbackFailed);
    EXPECT_EQ(secrets->itemCount(), 0u);

    const auto signedIn = login(*session);
    ASSERT_TRUE(signedIn) << describe(signedIn.error());
    EXPECT_EQ(storedCredential(), issuedCredential());
}

// --- validAccessToken ---

TEST_F(ClaudeOAuthSessionTest, NoCredentialIsSignedOutAndAFailingStoreIsAStorageFailure) {
    auto session = makeSession();
    EXPECT_FALSE(session->isSignedIn());
    EXPECT_EQ(session->validAccessToken().error(), ClaudeOAuthError::signedOut);
    storeCredential(5000);
    secrets->setFailure(SecretStoreError::unavailable);
    EXPECT_FALSE(session->isSignedIn());
    EXPECT_EQ(session->validAccessToken().error(), ClaudeOAuthError::credentialStorageFailed);
}

TEST_F(ClaudeOAuthSessionTest, RefreshesOnlyWithin300Seconds) {
    for (const auto& [secondsLeft, refreshes] :
         std::vector<std::pair<double, bool>>{{301, false}, {300.001, false}, {300, true}, {-86400, true}}) {
        storeCredential(secondsLeft);
        const auto before = tokenRequests().size();
        EXPECT_EQ(makeSession()->validAccessToken().value(), refreshes ? issuedAccess : "stored-access")
            << secondsLeft << " s left";
        EXPECT_EQ(tokenRequests().size() - before, refreshes ? 1u : 0u) << secondsLeft << " s left";
    }
}

TEST_F(ClaudeOAuthSessionTest, RefreshSendsStoredTokenAndScopesAndStoresTheAnswer) {
    storeCredential(10, {"user:profile", "org:create_api_key"});
    auto session = makeSession();
    ASSERT_TRUE(session->validAccessToken());
    EXPECT_EQ(tokenRequests().at(0).body, R"({"grant_type":"refresh_token","refresh_token":"stored-refresh",)"
                                          R"("client_id":")" +
                                              clientId + R"(","scope":"user:profile org:create_api_key"})");
    EXPECT_EQ(storedCredential(), issuedCredential());
    // The fresh token is now used without another refresh.
    EXPECT_EQ(session->validAccessToken().value(), issuedAccess);
    EXPECT_EQ(tokenRequests().size(), 1u);
}

TEST_F(ClaudeOAuthSessionTest, RefreshWithoutNewRefreshTokenOrScopeKeepsOldTokenAndUsesStaticScopes) {
    storeCredential(0, {"custom"});
    FakeClaudeService::TokenScript sparse;
    sparse.refreshToken.reset();
    sparse.scope.reset();
    fake.setTokenScript(sparse);
    ASSERT_TRUE(makeSession()->validAccessToken());
    EXPECT_EQ(storedCredential()->refreshToken, "stored-refresh");
    EXPECT_EQ(storedCredential()->scopes, ClaudeOAuthSession::scopes());
}

TEST_F(ClaudeOAuthSessionTest, FailedRefreshKeepsTheOldCredential) {
    storeCredential(0);
    const auto before = storedCredential();
    fake.server().route("/v1/oauth/token", HttpAnswer{201, R"({"access_token":"a","expires_in":60})"});
    EXPECT_EQ(makeSession()->validAccessToken().error(), ClaudeOAuthError::tokenRefreshFailed);
    EXPECT_EQ(storedCredential(), before);
}

TEST_F(ClaudeOAuthSessionTest, ConcurrentCallersShareOneRefresh) {
    storeCredential(0);
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
        EXPECT_EQ(result.get().value(), issuedAccess);
    }
    EXPECT_EQ(tokenRequests().size(), 1u);
}

// --- logout ---

TEST_F(ClaudeOAuthSessionTest, LogoutRevokesTheRefreshTokenAndDeletesEvenWhenRevocationIsDown) {
    storeCredential(5000);
    auto session = makeSession();
    ASSERT_TRUE(session->logout());
    EXPECT_FALSE(session->isSignedIn());
    const auto revocations = fake.server().requests("/v1/oauth/token/revoke");
    ASSERT_EQ(revocations.size(), 1u);
    EXPECT_EQ(revocations[0].body,
              R"({"token":"stored-refresh","token_type_hint":"refresh_token","client_id":")" + clientId +
                  "\"}");

    storeCredential(5000);
    fake.server().stop();
    ASSERT_TRUE(session->logout());
    EXPECT_EQ(secrets->itemCount(), 0u);
}

TEST_F(ClaudeOAuthSessionTest, LogoutTreatsUnreadableDataAsNoCredentialButFailsWhenDeleteFails) {
    ASSERT_TRUE(secrets->save("app.gaugewell.claude.oauth", "primary", "garbage"));
    auto session = makeSession();
    EXPECT_TRUE(session->logout());
    EXPECT_EQ(secrets->itemCount(), 0u);
    EXPECT_TRUE(fake.server().requests().empty());

    secrets->setFailure(SecretStoreError::failed);
    EXPECT_EQ(session->logout().error(), ClaudeOAuthError::credentialStorageFailed);
}

} // namespace
} // namespace gaugewell
