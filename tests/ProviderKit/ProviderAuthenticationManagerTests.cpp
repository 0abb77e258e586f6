#include "AuthenticationFakes.h"
#include "Platform/InMemoryUserDefaults.h"
#include "ProviderKit/Authentication/ProviderAuthenticationManager.h"
#include "TemporaryDirectory.h"

#include <gtest/gtest.h>

namespace gaugewell {
namespace {

using testing::FakeClaude;
using testing::FakeCodexSession;
using testing::FakeCommandRunner;
using Connection = ProviderConnectionStatus;

const std::vector<std::string> helpArguments{"app-server", "--help"};
const std::vector<std::string> statusArguments{"login", "status"};

class ProviderAuthenticationManagerTest : public ::testing::Test {
protected:
    void SetUp() override { answer(helpArguments, 0, "Usage: codex app-server"); }

    void installCodex() { testing::writeScript(root / "bin" / "codex", ""); }
    // The tool's chatter on standard error names ChatGPT: only standard output may count.
    void answer(const std::vector<std::string>& arguments, int status, std::string output) {
        runner->answers.insert_or_assign(
            arguments, Expected<CommandOutput, ProcessSupportError>(
                           CommandOutput{status, std::move(output), "Logged in using ChatGPT\n"}));
    }

    ProviderAuthenticationManager& manager() {
        if (!instance) {
            const Environment environment{{"PATH", (root / "bin").string() + ":/nonexistent"},
                                          {"HOME", (root / "home").string()},
                                          {"SECRET_TOKEN", "x"}};
            instance =
                std::make_unique<ProviderAuthenticationManager>(ProviderAuthenticationManager::Dependencies{
                    ExecutableLocator(), runner, root / "home",
                    std::map<ProviderService, std::filesystem::path>(), defaults,
                    "connections.oauth-authorized.v2", claude, codexSession, environment});
        }
        return *instance;
    }
    std::optional<bool> flag() const { return defaults->storedBool("connections.oauth-authorized.v2.codex"); }

    testing::TemporaryDirectory root;
    std::shared_ptr<FakeCommandRunner> runner = std::make_shared<FakeCommandRunner>();
    std::shared_ptr<InMemoryUserDefaults> defaults = std::make_shared<InMemoryUserDefaults>();
    std::shared_ptr<FakeClaude> claude = std::make_shared<FakeClaude>();
    std::shared_ptr<FakeCodexSession> codexSession = std::make_shared<FakeCodexSession>();
    std::unique_ptr<ProviderAuthenticationManager> instance;
};

TEST_F(ProviderAuthenticationManagerTest, ToolWithoutAppServerIsUnsupportedAndACapableToolIsAskedOnce) {
    installCodex();
    answer(helpArguments, 2, "");
    EXPECT_EQ(manager().status(ProviderService::codex),
              (ProviderConnectionState{ProviderService::codex, Connection::unsupportedVersion,
                                       "Codex must be updated to support live usage access"}));
    EXPECT_EQ(manager().status(ProviderService::codex).status, Connection::unsupportedVersion);
    EXPECT_EQ(runner->count(helpArguments), 2); // a failed check is not remembered

    answer(helpArguments, 0, "app-server");
    answer(statusArguments, 1, "");
    manager().status(ProviderService::codex);
    manager().status(ProviderService::codex);
    EXPECT_EQ(runner->count(helpArguments), 3);
}

// Its folder goes first so that its `node` is found; the rules are CodexExecutable's, handed on here.
TEST_F(ProviderAuthenticationManagerTest, ChildRunsWithTheToolsFolderFirstOnPathAndAReducedEnvironment) {
    const auto nvmBin = root / "home" / ".nvm" / "versions" / "node" / "v22.3.0" / "bin";
    testing::writeScript(nvmBin / "codex", "");
    answer(statusArguments, 1, "");
    manager().status(ProviderService::codex);
    ASSERT_FALSE(runner->runs.empty());
    const auto& environment = runner->runs.back().environment;
    EXPECT_EQ(runner->runs.back().executable, nvmBin / "codex");
    EXPECT_EQ(environment.at("PATH"), nvmBin.string() + ":" + (root / "bin").string() + ":/nonexistent");
    EXPECT_EQ(environment.count("SECRET_TOKEN"), 0u);
}

TEST_F(ProviderAuthenticationManagerTest, StatusFollowsTheToolsStandardOutputAndTheAuthorizationFlag) {
    installCodex();
    const struct {
        const char* output;
        bool authorized;
        Connection status;
        const char* detail;
    } cases[] = {
        {"Logged in using ChatGPT\n", false, Connection::disconnected,
         "Account available — connect to authorize usage access"},
        {"Logged in using an API key - sk-proj-***\n", true, Connection::signedIn, "OpenAI API key"},
        {"auth: API-KEY\n", true, Connection::signedIn, "OpenAI API key"},
    };
    for (const auto& [output, authorized, status, detail] : cases) {
        answer(statusArguments, 0, output);
        defaults->set("connections.oauth-authorized.v2.codex", authorized);
        EXPECT_EQ(manager().status(ProviderService::codex),
                  (ProviderConnectionState{ProviderService::codex, status, detail}))
            << output;
    }
}

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
    answer(statusArguments, 1, "");
    EXPECT_EQ(manager().login(ProviderService::codex).status, Connection::signedOut);
    EXPECT_FALSE(flag().has_value());

    codexSession->onLogin = [&] { answer(statusArguments, 0, "Logged in using ChatGPT\n"); };
    EXPECT_EQ(manager().login(ProviderService::codex),
              (ProviderConnectionState{ProviderService::codex, Connection::signedIn, "ChatGPT account"}));
    EXPECT_EQ(flag(), true);
}

// A timed-out sign-in is shown by the real tool's test.
TEST_F(ProviderAuthenticationManagerTest, OtherCodexSignInErrorsAreNotCompleted) {
    installCodex();
    codexSession->loginResult = CodexOAuthError{CodexOAuthError::Kind::rpcError, -32600};
    EXPECT_EQ(manager().login(ProviderService::codex),
              (ProviderConnectionState{ProviderService::codex, Connection::failed,
                                       "ChatGPT sign-in was not completed"}));
    EXPECT_FALSE(flag().has_value());
}

// A successful sign-out is shown by the real tool's test.
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
    EXPECT_EQ(runner->count(helpArguments), 0); // signing out needs no capability check
}

// The other Claude states are shown through the command line's tests.
TEST_F(ProviderAuthenticationManagerTest, ClaudeStatesComeFromItsSession) {
    claude->signedIn = true;
    EXPECT_EQ(
        manager().status(ProviderService::claude),
        (ProviderConnectionState{ProviderService::claude, Connection::signedIn, "Claude account · keyring"}));
    claude->logoutSucceeds = false;
    EXPECT_EQ(manager().disconnect(ProviderService::claude),
              (ProviderConnectionState{ProviderService::claude, Connection::failed,
                                       "Claude credentials could not be removed"}));
    EXPECT_TRUE(runner->runs.empty());
}

} // namespace
} // namespace gaugewell
