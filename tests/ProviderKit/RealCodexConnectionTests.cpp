#include "AuthenticationFakes.h"
#include "Platform/InMemoryUserDefaults.h"
#include "ProviderKit/Authentication/ProviderAuthenticationManager.h"
#include "ProviderKit/CodexSignIn/CodexOAuthSession.h"
#include "ProviderKit/Process/ChildProcess.h"
#include "ProviderKit/Process/PosixCommandRunner.h"

#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <unistd.h>

namespace gaugewell {
namespace {

namespace fs = std::filesystem;
using Connection = ProviderConnectionStatus;

const fs::path realCodexFolder = fs::path(GAUGEWELL_SOURCE_DIR) / ".deps/codex/node_modules/.bin";

// The real `codex` CLI, signed out, in a fresh home of its own. It needs no network for any of this.
class RealCodexConnectionTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::signal(SIGPIPE, SIG_IGN);
        ASSERT_TRUE(fs::exists(realCodexFolder / "codex"))
            << "the codex test peer is missing: run scripts/setup.sh (make test does)";
        // Not under /tmp: the tool refuses to set itself up in a temporary folder's home.
        home = fs::path(GAUGEWELL_BINARY_DIR) / "test-homes" /
               (std::string("codex-") + ::testing::UnitTest::GetInstance()->current_test_info()->name() +
                "-" + std::to_string(::getpid()));
        fs::remove_all(home);
        fs::create_directories(home);
        environment = {{"HOME", home.string()}, {"PATH", realCodexFolder.string() + ":/usr/bin:/bin"}};
    }
    void TearDown() override { fs::remove_all(home); }

    std::unique_ptr<ProviderAuthenticationManager>
    makeManager(std::shared_ptr<CodexAccountAuthenticating> session) {
        return std::make_unique<ProviderAuthenticationManager>(ProviderAuthenticationManager::Dependencies{
            ExecutableLocator(), std::make_shared<PosixCommandRunner>(), home,
            std::map<ProviderService, fs::path>(), defaults, "connections.oauth-authorized.v2",
            std::make_shared<testing::FakeClaude>(), std::move(session), environment});
    }

    void signInWithApiKey() {
        auto login = ChildProcess::spawn(
            realCodexFolder / "codex", {"login", "--with-api-key"}, environment,
            {ChildProcess::Stream::pipe, ChildProcess::Stream::null, ChildProcess::Stream::null});
        ASSERT_TRUE(login.hasValue());
        ChildProcess child = std::move(login).value();
        const std::string key = "sk-gaugewell-test-not-a-key";
        ASSERT_EQ(::write(child.inputDescriptor(), key.data(), key.size()), static_cast<ssize_t>(key.size()));
        child.closeInput();
        ASSERT_EQ(child.waitUntilExit(), 0);
    }

    fs::path home;
    Environment environment;
    std::shared_ptr<InMemoryUserDefaults> defaults = std::make_shared<InMemoryUserDefaults>();
    std::vector<std::string> openedURLs;
};

TEST_F(RealCodexConnectionTest, SignedOutThenSignedInNeedsAuthorizationThenDisconnectSignsTheToolOut) {
    const auto manager =
        makeManager(std::make_shared<CodexOAuthSession>([](const std::string&) { return true; }));
    EXPECT_EQ(
        manager->status(ProviderService::codex),
        (ProviderConnectionState{ProviderService::codex, Connection::signedOut, "ChatGPT sign-in required"}));

    signInWithApiKey();
    EXPECT_EQ(manager->status(ProviderService::codex).status, Connection::disconnected);

    defaults->set(manager->codexAuthorizationKey(), true);
    // The tool describes the account on standard error only, so the detail is the generic one.
    EXPECT_EQ(manager->status(ProviderService::codex),
              (ProviderConnectionState{ProviderService::codex, Connection::signedIn, "Codex account"}));

    EXPECT_EQ(
        manager->disconnect(ProviderService::codex),
        (ProviderConnectionState{ProviderService::codex, Connection::signedOut, "Signed out from ChatGPT"}));
    EXPECT_EQ(defaults->storedBool(manager->codexAuthorizationKey()), false);
    EXPECT_EQ(manager->status(ProviderService::codex).status, Connection::signedOut);
}

TEST_F(RealCodexConnectionTest, SignInReachesTheBrowserAndEndsAtTheDeadline) {
    CodexOAuthSession::Limits limits;
    limits.loginTimeout = std::chrono::seconds(4);
    const auto manager = makeManager(std::make_shared<CodexOAuthSession>(
        [this](const std::string& url) {
            openedURLs.push_back(url);
            return true;
        },
        limits));
    EXPECT_EQ(manager->login(ProviderService::codex),
              (ProviderConnectionState{ProviderService::codex, Connection::failed, "Sign-in timed out"}));
    ASSERT_EQ(openedURLs.size(), 1u);
    EXPECT_EQ(openedURLs[0].rfind("https://", 0), 0u);
    EXPECT_FALSE(defaults->storedBool(manager->codexAuthorizationKey()).has_value());
}

} // namespace
} // namespace gaugewell
