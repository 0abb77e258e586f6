#include "FakeCodex.h"
#include "ProviderKit/CodexSignIn/CodexOAuthSession.h"

#include <csignal>
#include <future>
#include <gtest/gtest.h>

namespace gaugewell {
namespace {

using namespace std::chrono_literals;
using testing::FakeCodex;
using Kind = CodexOAuthError::Kind;

// Answers initialize, then reads "initialized" and the one request after it. The connection's own
// reading, deadline and byte cap are guarded with the usage exchange; these tests cover the sign-in's steps.
const std::string opened = "receive()\nsend('{\"id\":1,\"result\":{}}')\nreceive()\nreceive()\n";
const std::string loginStarted = opened + R"(send('{"id":2,"result":{"type":"chatgpt","loginId":"login-1",)"
                                          R"("authUrl":"https://auth.example.invalid/oauth?x=1"}}'))"
                                          "\n";

class CodexOAuthSessionTest : public ::testing::Test {
protected:
    void SetUp() override { std::signal(SIGPIPE, SIG_IGN); }

    CodexOAuthSession session(CodexOAuthSession::Limits limits = {}) {
        return CodexOAuthSession(
            [this](const std::string& url) {
                openedURLs.push_back(url);
                return browserAnswer;
            },
            limits);
    }

    const Environment environment{{"PATH", "/usr/bin:/bin"}};
    std::vector<std::string> openedURLs;
    bool browserAnswer = true;
};

TEST_F(CodexOAuthSessionTest, SignInOpensTheBrowserAndWaitsForItsOwnCompletion) {
    const auto codex = FakeCodex::python(loginStarted + R"(
send('{"method":"account/login/completed","params":{"loginId":"login-0","success":false}}')
send('{"method":"something/else","params":{"success":false}}')
send('{"method":"account/login/completed","params":{"loginId":"login-1","success":true}}')
finish())");
    EXPECT_EQ(session().login(codex.executable(), environment), std::nullopt);
    EXPECT_EQ(openedURLs, std::vector<std::string>{"https://auth.example.invalid/oauth?x=1"});
    EXPECT_TRUE(codex.receivedInput().ends_with(R"({"id":2,"method":"account/login/start","params":)"
                                                R"({"type":"chatgpt","useHostedLoginSuccessPage":true}})"
                                                "\n"))
        << codex.receivedInput();
}

TEST_F(CodexOAuthSessionTest, CompletionDecidesTheOutcome) {
    const CodexOAuthError failed{Kind::signInFailed};
    for (const auto& [params, expected] : std::vector<std::pair<std::string, std::optional<CodexOAuthError>>>{
             {R"({"success":true})", std::nullopt}, // without a login id it counts
             {R"({"loginId":"login-1","success":false})", failed},
             {R"({"loginId":"login-1"})", failed},
             {R"({"loginId":"login-1","success":"true"})", failed}}) {
        const auto codex = FakeCodex::python(
            loginStarted + "send('{\"method\":\"account/login/completed\",\"params\":" + params +
            "}')\nfinish()");
        EXPECT_EQ(session().login(codex.executable(), environment), expected) << params;
    }
}

TEST_F(CodexOAuthSessionTest, UnexpectedLoginAnswerFailsBeforeAnyBrowser) {
    const CodexOAuthError malformed{Kind::malformedResponse};
    for (const char* result : {R"({"type":"apiKey","loginId":"l","authUrl":"https://a.invalid/"})",
                               R"({"type":"chatgpt","authUrl":"https://a.invalid/"})",
                               R"({"type":"chatgpt","loginId":"l","authUrl":"not a url"})", R"("chatgpt")"}) {
        const auto codex =
            FakeCodex::python(opened + "send('{\"id\":2,\"result\":" + result + "}')\nfinish()");
        EXPECT_EQ(session().login(codex.executable(), environment), malformed) << result;
    }
    EXPECT_TRUE(openedURLs.empty());
}

TEST_F(CodexOAuthSessionTest, BrowserThatCannotOpenFails) {
    browserAnswer = false;
    const auto codex = FakeCodex::python(loginStarted + "finish()");
    EXPECT_EQ(session().login(codex.executable(), environment), (CodexOAuthError{Kind::browserCouldNotOpen}));
}

// A sign-out that the real tool answers is shown by RealCodexConnectionTests.
TEST_F(CodexOAuthSessionTest, FailuresBecomeTheSignInsOwnErrors) {
    EXPECT_EQ(session().logout("/nonexistent/codex", environment), (CodexOAuthError{Kind::launchFailed}));
    for (const auto& [script, expected] : std::vector<std::pair<std::string, CodexOAuthError>>{
             {"receive()\nsend('[1]')", {Kind::malformedResponse}},
             {opened + R"(send('{"id":2,"error":{"code":-32600,"message":"no"}}'))",
              {Kind::rpcError, -32600}},
             {opened + R"(send('{"id":2,"error":{"message":"no"}}'))", {Kind::rpcError, -1}},
             {opened + R"(send('{"id":2,"error":{"code":"x"}}'))", {Kind::rpcError, -1}}}) {
        const auto codex = FakeCodex::python(script + "\nfinish()");
        EXPECT_EQ(session().logout(codex.executable(), environment), expected) << script;
    }
}

TEST_F(CodexOAuthSessionTest, CancelEndsASignInWaitingForTheBrowser) {
    const auto codex = FakeCodex::python(loginStarted + "receive()"); // ended by the cancel's SIGTERM
    std::promise<void> browserOpened;
    CodexOAuthSession cancellable([&](const std::string&) {
        browserOpened.set_value();
        return true;
    });
    auto result =
        std::async(std::launch::async, [&] { return cancellable.login(codex.executable(), environment); });
    ASSERT_EQ(browserOpened.get_future().wait_for(10s), std::future_status::ready);
    cancellable.cancel();
    ASSERT_EQ(result.wait_for(10s), std::future_status::ready);
    EXPECT_EQ(result.get(), (CodexOAuthError{Kind::streamEnded}));
}

} // namespace
} // namespace gaugewell
