#include "BoundedSignIn.h"
#include "ClaudeProvider/ClaudeUsageProvider.h"
#include "FakeClaudeService.h"
#include "HeadlessChromium.h"
#include "ManualClock.h"
#include "Platform/SecretStore.h"
#include "ProviderKit/ClaudeSignIn/ClaudeOAuthSession.h"
#include "ProviderKit/Http/CurlHttpClient.h"
#include "ProviderKit/Process/PosixCommandRunner.h"
#include "UsageDomain/Uuid.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace gaugewell {
namespace {

using namespace std::chrono_literals;
using testing::FakeClaudeService;
using testing::HeadlessChromium;
namespace fs = std::filesystem;

const Uuid claudeConnection = *Uuid::parse("A115A6E0-337E-4F26-9809-6B2E75C39D02");

// The files below the test's home and XDG folders that contain `needle`, one per line, leaving out the
// keyring's own folder (whose files are encrypted anyway).
std::string filesContaining(const std::string& needle) {
    std::vector<std::string> arguments{"-rlsF", "-D", "skip", "--exclude-dir=keyrings", "--", needle};
    for (const char* variable :
         {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"}) {
        if (const char* value = std::getenv(variable)) {
            arguments.emplace_back(value);
        }
    }
    const auto grep =
        PosixCommandRunner().run("/bin/grep", arguments, currentProcessEnvironment(), 60s, 1 << 16);
    return grep ? grep->standardOutput + grep->standardError : "<grep did not run>";
}

class ClaudeSignInEndToEnd : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_NE(std::getenv("DBUS_SESSION_BUS_ADDRESS"), nullptr)
            << "run this suite through scripts/test-session.sh (private bus, unlocked keyring, fresh HOME)";
        ASSERT_TRUE(HeadlessChromium::isInstalled())
            << HeadlessChromium::executable << " is missing: scripts/setup.sh installs the chromium package";
        ASSERT_TRUE(credentialStore().remove()) << "the session keyring is not usable";
        FakeClaudeService::TokenScript script;
        script.accessToken = accessToken;
        script.refreshToken = refreshToken;
        fake.setTokenScript(script);
    }

    void TearDown() override {
        chromium.close();
        (void)credentialStore().remove();
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

    std::optional<std::string> storedSecret() {
        return secrets->load(ClaudeCredentialStore::defaultService, account).value();
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
    const auto login = testing::signInWithin(*session, 60s);
    const auto token = session->validAccessToken();
    ClaudeUsageProvider provider(session, http, fake.endpoints());
    const auto usage = provider.collect(UsageCollectionRequest(claudeConnection, clock.now()));
    const std::string printed =
        ::testing::internal::GetCapturedStdout() + ::testing::internal::GetCapturedStderr();

    ASSERT_TRUE(login) << describe(login.error());
    chromium.close();

    const auto secret = storedSecret();
    ASSERT_TRUE(secret);
    EXPECT_NE(secret->find(refreshToken), std::string::npos);
    EXPECT_TRUE(token && *token == accessToken) << "validAccessToken did not return the stored token";
    EXPECT_EQ(provider.probe().availability(), ProviderAvailability::availableWithLimitations);
    EXPECT_FALSE(usage.hasErrorDiagnostic());
    EXPECT_EQ(usage.windows().size(), 4u);

    // Nothing secret was printed, and no token was written anywhere but the keyring.
    const auto exchange = fake.server().requests("/v1/oauth/token");
    const std::string verifier = *parseJson(exchange.at(0).body).value().find("code_verifier")->stringValue();
    for (const auto& secretText : {accessToken, refreshToken, authorizationCode, verifier}) {
        EXPECT_EQ(printed.find(secretText), std::string::npos) << "a secret appeared in the output";
    }
    // The browser's own profile keeps the redirect (and so the one-time code) in its history; the tokens
    // never pass through the browser and must be nowhere but in the keyring.
    for (const auto& token : {accessToken, refreshToken}) {
        EXPECT_EQ(filesContaining(token), "") << "a token was written to these files";
    }
}

TEST_F(ClaudeSignInEndToEnd, RefreshKeepsTheKeyringCurrentAndLogoutWorksOffline) {
    auto session = makeSession();
    ASSERT_TRUE(testing::signInWithin(*session, 60s));
    chromium.close();

    const std::string renewedToken = "e2e-renewed-" + Uuid::random().text();
    FakeClaudeService::TokenScript renewed;
    renewed.accessToken = renewedToken;
    renewed.refreshToken.reset();
    fake.setTokenScript(renewed);
    clock.advance(3600);
    EXPECT_TRUE(session->validAccessToken().value() == renewedToken);
    const auto secret = storedSecret();
    ASSERT_TRUE(secret);
    EXPECT_NE(secret->find(renewedToken), std::string::npos);
    EXPECT_NE(secret->find(refreshToken), std::string::npos); // kept: the answer had none

    // The revocation endpoint is down: signing out still removes the credential.
    fake.server().stop();
    ASSERT_TRUE(session->logout());
    EXPECT_EQ(storedSecret(), std::nullopt);
}

TEST_F(ClaudeSignInEndToEnd, ForgedStateIsRejectedAndNothingIsStored) {
    fake.setStateOverride("forged-" + Uuid::random().text());
    const auto login = testing::signInWithin(*makeSession(), 60s);
    ASSERT_FALSE(login);
    EXPECT_EQ(login.error(), ClaudeOAuthError::stateMismatch) << describe(login.error());
    EXPECT_EQ(storedSecret(), std::nullopt);
}

TEST(ClaudeSecretScan, FindsASecretWrittenBelowHome) {
    // Guards the scan above against looking in the wrong place.
    const char* home = std::getenv("HOME");
    ASSERT_NE(home, nullptr);
    const std::string marker = "scan-marker-" + Uuid::random().text();
    const fs::path file = fs::path(home) / "nested" / "marker.txt";
    fs::create_directories(file.parent_path());
    std::ofstream(file) << "prefix " << marker << " suffix";
    EXPECT_EQ(filesContaining(marker), file.string() + "\n");
    fs::remove_all(file.parent_path());
    EXPECT_EQ(filesContaining(marker), "");
}

} // namespace
} // namespace gaugewell
