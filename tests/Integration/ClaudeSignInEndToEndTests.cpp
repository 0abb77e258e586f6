#include "ClaudeProvider/ClaudeUsageProvider.h"
#include "FakeClaudeService.h"
#include "HeadlessChromium.h"
#include "LibsecretThreadSanitizerSuppressions.h"
#include "ManualClock.h"
#include "Platform/SecretStore.h"
#include "ProviderKit/ClaudeOAuthSession.h"
#include "ProviderKit/CurlHttpClient.h"
#include "UsageDomain/Uuid.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <gtest/gtest.h>
#include <iterator>

namespace gaugewell {
namespace {

using namespace std::chrono_literals;
using testing::FakeClaudeService;
using testing::HeadlessChromium;
namespace fs = std::filesystem;

const Uuid claudeConnection = *Uuid::parse("A115A6E0-337E-4F26-9809-6B2E75C39D02");

// Files below the test's home and XDG folders that contain `needle`, leaving out the keyring's own folder
// (whose files are encrypted anyway).
std::vector<fs::path> filesContaining(const std::string& needle) {
    std::vector<fs::path> roots;
    for (const char* variable :
         {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"}) {
        if (const char* value = std::getenv(variable); value != nullptr && fs::is_directory(value)) {
            roots.emplace_back(value);
        }
    }
    std::vector<fs::path> found;
    for (const auto& root : roots) {
        // Other test processes create and delete files here meanwhile: whatever vanishes is skipped.
        std::error_code error;
        auto entry =
            fs::recursive_directory_iterator(root, fs::directory_options::skip_permission_denied, error);
        for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
            std::error_code statusError;
            const auto status = entry->symlink_status(statusError);
            if (statusError) {
                continue;
            }
            if (fs::is_directory(status) && entry->path().filename() == "keyrings") {
                entry.disable_recursion_pending();
                continue;
            }
            if (!fs::is_regular_file(status)) {
                continue;
            }
            std::ifstream file(entry->path(), std::ios::binary);
            const std::string contents((std::istreambuf_iterator<char>(file)),
                                       std::istreambuf_iterator<char>());
            if (contents.find(needle) != std::string::npos) {
                found.push_back(entry->path());
            }
        }
    }
    return found;
}

class ClaudeSignInEndToEnd : public ::testing::Test {
protected:
    static void SetUpTestSuite() { std::signal(SIGPIPE, SIG_IGN); }

    void SetUp() override {
        ASSERT_NE(std::getenv("DBUS_SESSION_BUS_ADDRESS"), nullptr)
            << "run this suite through scripts/test-session.sh (private bus, unlocked keyring, fresh HOME)";
        ASSERT_TRUE(HeadlessChromium::isInstalled())
            << HeadlessChromium::executable << " is missing: scripts/setup.sh installs the chromium package";
        ASSERT_TRUE(credentialStore().remove().hasValue()) << "the session keyring is not usable";
        FakeClaudeService::TokenScript script;
        script.accessToken = accessToken;
        script.refreshToken = refreshToken;
        fake.setTokenScript(script);
    }

    void TearDown() override {
        chromium.close();
        credentialStore().remove();
    }

    // The application's service with an account of this test's own: test processes run in parallel
    // against one session keyring.
    ClaudeCredentialStore credentialStore() const {
        return ClaudeCredentialStore(secrets, std::string(ClaudeCredentialStore::defaultService), account);
    }

    std::shared_ptr<ClaudeOAuthSession> makeSession() {
        return std::make_shared<ClaudeOAuthSession>(
            credentialStore(), http, fake.endpoints(),
            [this](const std::string& url) { return chromium.open(url); }, [this] { return clock.now(); });
    }

    // A sign-in through the real browser, bounded: a browser that never comes back is cancelled.
    Expected<std::monostate, ClaudeOAuthError> loginThroughBrowser(ClaudeOAuthSession& session) {
        auto login = std::async(std::launch::async, [&] { return session.login(); });
        if (login.wait_for(60s) != std::future_status::ready) {
            ADD_FAILURE() << "the browser did not complete the redirect within 60 s";
            session.cancelLogin();
        }
        return login.get();
    }

    std::optional<std::string> storedSecret() {
        auto loaded = secrets->load(ClaudeCredentialStore::defaultService, account);
        EXPECT_FALSE(loaded.error.has_value()) << "the keyring failed to load";
        return loaded.secret;
    }

    const std::string account = "e2e-" + Uuid::random().text();
    const std::string accessToken = "e2e-access-" + Uuid::random().text();
    const std::string refreshToken = "e2e-refresh-" + Uuid::random().text();
    FakeClaudeService fake;
    std::shared_ptr<SecretStore> secrets = std::make_shared<LibsecretSecretStore>();
    std::shared_ptr<CurlHttpClient> http = std::make_shared<CurlHttpClient>();
    testing::ManualClock clock;
    HeadlessChromium chromium{fs::path(std::getenv("HOME") ? std::getenv("HOME") : "/tmp") / "browser"};
};

TEST_F(ClaudeSignInEndToEnd, BrowserSignInStoresTheCredentialAndUsageCanBeCollected) {
    const std::string authorizationCode = "e2e-code-" + Uuid::random().text();
    fake.setAuthorizationCode(authorizationCode);
    auto session = makeSession();

    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    const auto login = loginThroughBrowser(*session);
    const auto token = session->validAccessToken();
    ClaudeUsageProvider provider(session, http, fake.endpoints());
    const auto probe = provider.probe();
    const auto usage = provider.collect(UsageCollectionRequest(claudeConnection, clock.now()));
    const std::string printed =
        ::testing::internal::GetCapturedStdout() + ::testing::internal::GetCapturedStderr();

    ASSERT_TRUE(login.hasValue()) << "login failed with " << rawValue(login.error());
    // The browser was sent on to the hosted success page by the loopback listener.
    EXPECT_TRUE(fake.server().waitForRequests("/oauth/code/success", 1, 30s));
    chromium.close();

    const auto authorize = fake.server().requests("/cai/oauth/authorize");
    ASSERT_EQ(authorize.size(), 1u);
    EXPECT_TRUE(authorize[0].queryItem("redirect_uri")->starts_with("http://localhost:"));

    const auto secret = storedSecret();
    ASSERT_TRUE(secret.has_value());
    EXPECT_NE(secret->find(accessToken), std::string::npos);
    EXPECT_NE(secret->find(refreshToken), std::string::npos);
    ASSERT_TRUE(token.hasValue());
    EXPECT_TRUE(*token == accessToken) << "validAccessToken did not return the stored token";

    EXPECT_EQ(probe.availability(), ProviderAvailability::availableWithLimitations);
    EXPECT_FALSE(usage.hasErrorDiagnostic());
    ASSERT_EQ(usage.windows().size(), 4u);
    EXPECT_EQ(usage.windows()[0].providerBucketID(), "five_hour");
    EXPECT_EQ(usage.windows()[0].usedFraction(), Decimal::parse("0.415"));

    // Nothing secret was printed, and no secret was written anywhere but the keyring.
    const auto verifier = [&] {
        const auto exchange = fake.server().requests("/v1/oauth/token");
        return exchange.empty() ? std::string("<none>")
                                : exchange[0].body.substr(exchange[0].body.find("code_verifier"));
    }();
    for (const auto& secretText : {accessToken, refreshToken, authorizationCode}) {
        EXPECT_EQ(printed.find(secretText), std::string::npos) << "a secret appeared in the output";
    }
    // The browser's own profile keeps the redirect (and so the one-time code) in its history; the tokens
    // never pass through the browser and must be nowhere but in the keyring.
    for (const auto& token : {accessToken, refreshToken}) {
        for (const auto& file : filesContaining(token)) {
            ADD_FAILURE() << "a token was written to " << file;
        }
    }
    EXPECT_EQ(printed.find(verifier.substr(16, 64)), std::string::npos)
        << "the verifier appeared in the output";
    for (const auto& diagnostic : usage.diagnostics()) {
        EXPECT_EQ(diagnostic.message().find(accessToken), std::string::npos);
    }
}

TEST_F(ClaudeSignInEndToEnd, RefreshHappensAt300SecondsNotAt301ThenLogoutWorksOffline) {
    auto session = makeSession();
    ASSERT_TRUE(loginThroughBrowser(*session).hasValue());
    chromium.close();

    clock.advance(3600 - 301);
    EXPECT_TRUE(session->validAccessToken().value() == accessToken);
    EXPECT_EQ(fake.server().requests("/v1/oauth/token").size(), 1u); // the exchange only

    const std::string renewedToken = "e2e-renewed-" + Uuid::random().text();
    FakeClaudeService::TokenScript renewed;
    renewed.accessToken = renewedToken;
    renewed.refreshToken.reset();
    fake.setTokenScript(renewed);
    clock.advance(1);
    const auto refreshed = session->validAccessToken();
    ASSERT_TRUE(refreshed.hasValue());
    EXPECT_TRUE(*refreshed == renewedToken);
    EXPECT_EQ(fake.server().requests("/v1/oauth/token").size(), 2u);
    const auto secret = storedSecret();
    ASSERT_TRUE(secret.has_value());
    EXPECT_NE(secret->find(renewedToken), std::string::npos);
    EXPECT_NE(secret->find(refreshToken), std::string::npos); // kept: the answer had none

    // The revocation endpoint is down: signing out still removes the credential.
    fake.server().stop();
    ASSERT_TRUE(session->logout().hasValue());
    EXPECT_FALSE(storedSecret().has_value());
    EXPECT_FALSE(session->isSignedIn());
}

TEST_F(ClaudeSignInEndToEnd, ForgedStateIsRejectedAndNothingIsStored) {
    fake.setStateOverride("forged-" + Uuid::random().text());
    auto session = makeSession();
    const auto login = loginThroughBrowser(*session);
    ASSERT_FALSE(login.hasValue());
    EXPECT_EQ(login.error(), ClaudeOAuthError::stateMismatch);
    EXPECT_FALSE(storedSecret().has_value());
    EXPECT_TRUE(fake.server().requests("/v1/oauth/token").empty());
}

TEST_F(ClaudeSignInEndToEnd, TokenEndpointAnswering201FailsAndNothingIsStored) {
    FakeClaudeService::TokenScript script;
    script.status = 201;
    script.accessToken = accessToken;
    fake.setTokenScript(script);
    auto session = makeSession();
    const auto login = loginThroughBrowser(*session);
    ASSERT_FALSE(login.hasValue());
    EXPECT_EQ(login.error(), ClaudeOAuthError::tokenExchangeFailed);
    EXPECT_FALSE(storedSecret().has_value());
}

TEST(ClaudeSecretScan, FindsASecretWrittenBelowHome) {
    // Guards the scan above against looking in the wrong place.
    const char* home = std::getenv("HOME");
    ASSERT_NE(home, nullptr);
    const std::string marker = "scan-marker-" + Uuid::random().text();
    const fs::path file = fs::path(home) / "nested" / "marker.txt";
    fs::create_directories(file.parent_path());
    std::ofstream(file) << "prefix " << marker << " suffix";
    EXPECT_EQ(filesContaining(marker).size(), 1u);
    fs::remove_all(file.parent_path());
    EXPECT_TRUE(filesContaining(marker).empty());
}

} // namespace
} // namespace gaugewell
