#include "AuthenticationFakes.h"
#include "Platform/InMemoryUserDefaults.h"
#include "ProviderKit/Authentication/ProviderAuthenticationManager.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace gaugewell {
namespace {

namespace fs = std::filesystem;
using testing::FakeClaude;
using testing::FakeCodexSession;
using testing::FakeCommandRunner;
using Connection = ProviderConnectionStatus;

const std::vector<std::string> helpArguments{"app-server", "--help"};
const std::vector<std::string> statusArguments{"login", "status"};

class ProviderAuthenticationManagerTest : public ::testing::Test {
protected:
    void SetUp() override {
        root = fs::temp_directory_path() / ("gaugewell-auth-" + std::to_string(::getpid()) + "-" +
                                            ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(root);
        fs::create_directories(root / "home");
        fs::create_directories(root / "bin");
        runner->answers.insert_or_assign(helpArguments, Expected<CommandOutput, ProcessSupportError>(
                                                            CommandOutput{0, "Usage: codex app-server", ""}));
    }
    void TearDown() override { fs::remove_all(root); }

    void installCodex() {
        std::ofstream(root / "bin" / "codex") << "#!/bin/sh\n";
        fs::permissions(root / "bin" / "codex", fs::perms::owner_all);
    }
    void answerStatus(int status, std::string output) {
        runner->answers.insert_or_assign(
            statusArguments, Expected<CommandOutput, ProcessSupportError>(
                                 CommandOutput{status, std::move(output), "Logged in using ChatGPT\n"}));
    }

    ProviderAuthenticationManager& manager() {
        if (!instance) {
            instance =
                std::make_unique<ProviderAuthenticationManager>(ProviderAuthenticationManager::Dependencies{
                    ExecutableLocator(),
                    runner,
                    root / "home",
                    {},
                    defaults,
                    "connections.oauth-authorized.v2",
                    claude,
                    codexSession,
                    Environment{{"PATH", (root / "bin").string() + ":/nonexistent"},
                                {"HOME", (root / "home").string()},
                                {"SECRET_TOKEN", "x"}}});
        }
        return *instance;
    }
    std::optional<bool> flag() const { return defaults->storedBool("connections.oauth-authorized.v2.codex"); }

    fs::path root;
    std::shared_ptr<FakeCommandRunner> runner = std::make_shared<FakeCommandRunner>();
    std::shared_ptr<InMemoryUserDefaults> defaults = std::make_shared<InMemoryUserDefaults>();
    std::shared_ptr<FakeClaude> claude = std::make_shared<FakeClaude>();
    std::shared_ptr<FakeCodexSession> codexSession = std::make_shared<FakeCodexSession>();
    std::unique_ptr<ProviderAuthenticationManager> instance;
};

TEST_F(ProviderAuthenticationManagerTest, NoCodexAnywhereIsNotInstalledWithoutRunningAnything) {
    EXPECT_EQ(manager().status(ProviderService::codex),
              (ProviderConnectionState{ProviderService::codex, Connection::notInstalled,
                                       "Command-line tool not found"}));
    EXPECT_EQ(manager().login(ProviderService::codex).status, Connection::notInstalled);
    EXPECT_TRUE(runner->runs.empty());
}

TEST_F(ProviderAuthenticationManagerTest, ToolWithoutAppServerIsUnsupportedAndACapableToolIsAskedOnce) {
    installCodex();
    runner->answers.insert_or_assign(
        helpArguments, Expected<CommandOutput, ProcessSupportError>(CommandOutput{2, "", "unknown command"}));
    EXPECT_EQ(manager().status(ProviderService::codex),
              (ProviderConnectionState{ProviderService::codex, Connection::unsupportedVersion,
                                       "Codex must be updated to support live usage access"}));
    EXPECT_EQ(manager().status(ProviderService::codex).status, Connection::unsupportedVersion);
    EXPECT_EQ(runner->count(helpArguments), 2); // a failed check is not remembered

    runner->answers.insert_or_assign(
        helpArguments, Expected<CommandOutput, ProcessSupportError>(CommandOutput{0, "app-server", ""}));
    answerStatus(1, "");
    manager().status(ProviderService::codex);
    manager().status(ProviderService::codex);
    EXPECT_EQ(runner->count(helpArguments), 3);
}

TEST_F(ProviderAuthenticationManagerTest, ChildRunsWithTheToolsFolderFirstOnPathAndAReducedEnvironment) {
    // Found through the node version manager: its folder goes first so that its `node` is found.
    const auto nvmBin = root / "home" / ".nvm" / "versions" / "node" / "v22.3.0" / "bin";
    fs::create_directories(nvmBin);
    std::ofstream(nvmBin / "codex") << "#!/bin/sh\n";
    fs::permissions(nvmBin / "codex", fs::perms::owner_all);
    answerStatus(1, "");
    manager().status(ProviderService::codex);
    ASSERT_FALSE(runner->runs.empty());
    const auto& environment = runner->runs.back().environment;
    EXPECT_EQ(runner->runs.back().executable, nvmBin / "codex");
    EXPECT_EQ(environment.at("PATH"), nvmBin.string() + ":" + (root / "bin").string() + ":/nonexistent");
    EXPECT_EQ(environment.count("SECRET_TOKEN"), 0u);

    // Found on PATH: already there, so PATH is left alone.
    fs::remove(nvmBin / "codex");
    installCodex();
    manager().status(ProviderService::codex);
    EXPECT_EQ(runner->runs.back().environment.at("PATH"), (root / "bin").string() + ":/nonexistent");
}

struct AccountCase {
    int status;
    std::string output;
    bool authorized;
    ProviderConnectionStatus expectedStatus;
    std::string expectedDetail;
};

void PrintTo(const AccountCase& c, std::ostream* out) {
    *out << c.output << " / " << c.status;
}

class CodexAccountKinds : public ProviderAuthenticationManagerTest,
                          public ::testing::WithParamInterface<AccountCase> {};

TEST_P(CodexAccountKinds, StatusFollowsTheToolsAnswerAndTheAuthorizationFlag) {
    installCodex();
    const auto& c = GetParam();
    answerStatus(c.status, c.output);
    if (c.authorized) {
        defaults->set("connections.oauth-authorized.v2.codex", true);
    }
    EXPECT_EQ(manager().status(ProviderService::codex),
              (ProviderConnectionState{ProviderService::codex, c.expectedStatus, c.expectedDetail}));
}

INSTANTIATE_TEST_SUITE_P(
    Answers, CodexAccountKinds,
    ::testing::Values(AccountCase{0, "Logged in using ChatGPT\n", true, Connection::signedIn,
                                  "ChatGPT account"},
                      AccountCase{0, "Logged in using ChatGPT\n", false, Connection::disconnected,
                                  "Account available — connect to authorize usage access"},
                      AccountCase{0, "Logged in using an API key - sk-proj-***\n", true, Connection::signedIn,
                                  "OpenAI API key"},
                      AccountCase{0, "auth: API-KEY\n", true, Connection::signedIn, "OpenAI API key"},
                      AccountCase{0, "", true, Connection::signedIn, "Codex account"},
                      AccountCase{1, "Logged in using ChatGPT\n", true, Connection::signedOut,
                                  "ChatGPT sign-in required"}));

TEST_F(ProviderAuthenticationManagerTest, StatusThatCannotBeRunIsAFailure) {
    installCodex();
    runner->answers.insert_or_assign(statusArguments, Expected<CommandOutput, ProcessSupportError>(
                                                          unexpected(ProcessSupportError::timedOut)));
    EXPECT_EQ(manager().status(ProviderService::codex),
              (ProviderConnectionState{ProviderService::codex, Connection::failed,
                                       "Authentication status could not be checked"}));
}

TEST_F(ProviderAuthenticationManagerTest, CodexSignInSetsTheFlagOnlyWhenTheToolThenReportsSignedIn) {
    installCodex();
    answerStatus(1, "");
    EXPECT_EQ(manager().login(ProviderService::codex).status, Connection::signedOut);
    EXPECT_FALSE(flag().has_value());

    codexSession->onLogin = [&] { answerStatus(0, "Logged in using ChatGPT\n"); };
    EXPECT_EQ(manager().login(ProviderService::codex),
              (ProviderConnectionState{ProviderService::codex, Connection::signedIn, "ChatGPT account"}));
    EXPECT_EQ(flag(), true);
    EXPECT_EQ(manager().status(ProviderService::codex).status, Connection::signedIn);
}

TEST_F(ProviderAuthenticationManagerTest, CodexSignInErrorsBecomeFixedDetails) {
    installCodex();
    codexSession->loginResult = CodexOAuthError{CodexOAuthError::Kind::timedOut};
    EXPECT_EQ(manager().login(ProviderService::codex),
              (ProviderConnectionState{ProviderService::codex, Connection::failed, "Sign-in timed out"}));
    codexSession->loginResult = CodexOAuthError{CodexOAuthError::Kind::rpcError, -32600};
    EXPECT_EQ(manager().login(ProviderService::codex),
              (ProviderConnectionState{ProviderService::codex, Connection::failed,
                                       "ChatGPT sign-in was not completed"}));
    EXPECT_FALSE(flag().has_value());
}

TEST_F(ProviderAuthenticationManagerTest, CodexDisconnectClearsTheFlagUnlessSignOutFails) {
    defaults->set("connections.oauth-authorized.v2.codex", true);
    EXPECT_EQ(manager().disconnect(ProviderService::codex).status, Connection::notInstalled);
    EXPECT_EQ(flag(), false);

    installCodex();
    defaults->set("connections.oauth-authorized.v2.codex", true);
    codexSession->logoutResult = CodexOAuthError{CodexOAuthError::Kind::timedOut};
    EXPECT_EQ(manager().disconnect(ProviderService::codex),
              (ProviderConnectionState{ProviderService::codex, Connection::failed,
                                       "ChatGPT sign-out could not be completed"}));
    EXPECT_EQ(flag(), true);

    codexSession->logoutResult.reset();
    EXPECT_EQ(
        manager().disconnect(ProviderService::codex),
        (ProviderConnectionState{ProviderService::codex, Connection::signedOut, "Signed out from ChatGPT"}));
    EXPECT_EQ(flag(), false);
    EXPECT_EQ(runner->count(helpArguments), 0); // signing out needs no capability check
}

TEST_F(ProviderAuthenticationManagerTest, ClaudeStatesComeFromItsSession) {
    EXPECT_EQ(
        manager().status(ProviderService::claude),
        (ProviderConnectionState{ProviderService::claude, Connection::signedOut, "Claude sign-in required"}));
    EXPECT_EQ(manager().login(ProviderService::claude),
              (ProviderConnectionState{ProviderService::claude, Connection::failed,
                                       "Claude sign-in was not completed"}));
    claude->loginSucceeds = true;
    EXPECT_EQ(
        manager().login(ProviderService::claude),
        (ProviderConnectionState{ProviderService::claude, Connection::signedIn, "Claude account · keyring"}));
    EXPECT_EQ(manager().status(ProviderService::claude).status, Connection::signedIn);
    claude->logoutSucceeds = false;
    EXPECT_EQ(manager().disconnect(ProviderService::claude),
              (ProviderConnectionState{ProviderService::claude, Connection::failed,
                                       "Claude credentials could not be removed"}));
    claude->logoutSucceeds = true;
    EXPECT_EQ(manager().disconnect(ProviderService::claude),
              (ProviderConnectionState{ProviderService::claude, Connection::signedOut,
                                       "Tokens revoked and removed from the keyring"}));
    EXPECT_TRUE(runner->runs.empty());
}

TEST(ProviderConnectionState, BusyAndAuthenticatedStates) {
    for (const auto status : allCases<ProviderConnectionStatus>()) {
        const ProviderConnectionState current{ProviderService::codex, status, std::nullopt};
        EXPECT_EQ(current.isAuthenticated(), status == Connection::signedIn);
        EXPECT_EQ(current.isBusy(), status == Connection::checking || status == Connection::connecting ||
                                        status == Connection::disconnecting);
    }
    EXPECT_EQ(serviceForProviderID("app.gaugewell.claude.subscription"), ProviderService::claude);
    EXPECT_FALSE(serviceForProviderID("claude").has_value());
}

} // namespace
} // namespace gaugewell
