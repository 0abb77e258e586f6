#include "ProviderKit/CodexSignIn/CodexOAuthSession.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <future>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace gaugewell {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Kind = CodexOAuthError::Kind;

// Python helpers every fake starts with: read one request, answer, notify, keep a log of what arrived.
constexpr const char* prelude = R"(#!/usr/bin/env python3
import json, os, sys, time
LOG = os.path.join(os.path.dirname(os.path.abspath(__file__)), "requests.log")
def read():
    line = sys.stdin.readline()
    if not line:
        sys.exit(0)
    request = json.loads(line)
    with open(LOG, "a") as log:
        log.write(json.dumps(request) + "\n")
    return request
def send(obj):
    sys.stdout.write(json.dumps(obj) + "\n")
    sys.stdout.flush()
def handshake():
    request = read()
    send({"id": request["id"], "result": {"userAgent": "fake"}})
    read()  # initialized
def hang():
    os.write(2, b"pid %d\n" % os.getpid())
    while True:
        time.sleep(1)
)";

class CodexOAuthSessionTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::signal(SIGPIPE, SIG_IGN);
        directory =
            fs::temp_directory_path() / ("gaugewell-codex-oauth-" + std::to_string(::getpid()) + "-" +
                                         ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(directory);
        fs::create_directories(directory);
    }
    void TearDown() override { fs::remove_all(directory); }

    fs::path fakeCodex(const std::string& body) {
        const auto path = directory / "codex";
        std::ofstream(path) << prelude << body;
        fs::permissions(path, fs::perms::owner_all);
        return path;
    }

    std::vector<std::string> requestMethods() const {
        std::ifstream log(directory / "requests.log");
        std::vector<std::string> methods;
        for (std::string line; std::getline(log, line);) {
            const auto start = line.find("\"method\": \"");
            methods.push_back(start == std::string::npos
                                  ? "?"
                                  : line.substr(start + 11, line.find('"', start + 11) - start - 11));
        }
        return methods;
    }

    CodexOAuthSession session(CodexOAuthSession::Limits limits = {}) {
        return CodexOAuthSession(
            [this](const std::string& url) {
                openedURLs.push_back(url);
                return browserAnswer;
            },
            limits);
    }

    const Environment environment{{"PATH", "/usr/bin:/bin"}};
    fs::path directory;
    std::vector<std::string> openedURLs;
    bool browserAnswer = true;
};

constexpr const char* loginStart = R"(
handshake()
request = read()
send({"method": "account/rateLimits/updated", "params": {}})
send({"id": request["id"], "result": {"type": "chatgpt", "loginId": "login-1", "authUrl": "https://auth.example.invalid/oauth?x=1"}})
)";

TEST_F(CodexOAuthSessionTest, SignInOpensTheBrowserAndWaitsForItsOwnCompletion) {
    const auto codex = fakeCodex(std::string(loginStart) + R"(
send({"method": "account/login/completed", "params": {"loginId": "login-0", "success": False}})
send({"method": "something/else", "params": {"success": False}})
send({"method": "account/login/completed", "params": {"loginId": "login-1", "success": True}})
hang()
)");
    EXPECT_EQ(session().login(codex, environment), std::nullopt);
    EXPECT_EQ(openedURLs, std::vector<std::string>{"https://auth.example.invalid/oauth?x=1"});
    EXPECT_EQ(requestMethods(),
              (std::vector<std::string>{"initialize", "initialized", "account/login/start"}));
    std::ifstream log(directory / "requests.log");
    std::string initialize;
    std::getline(log, initialize);
    EXPECT_NE(initialize.find(R"("clientInfo": {"name": "gaugewell", "version": "0.1.0"})"),
              std::string::npos)
        << initialize;
    EXPECT_NE(initialize.find(R"("experimentalApi": true)"), std::string::npos);
    std::string start;
    std::getline(log, start);
    std::getline(log, start);
    EXPECT_NE(start.find(R"("type": "chatgpt", "useHostedLoginSuccessPage": true)"), std::string::npos)
        << start;
}

TEST_F(CodexOAuthSessionTest, CompletionWithoutLoginIdCounts) {
    const auto codex = fakeCodex(std::string(loginStart) + R"(
send({"method": "account/login/completed", "params": {"success": True}})
hang()
)");
    EXPECT_EQ(session().login(codex, environment), std::nullopt);
}

TEST_F(CodexOAuthSessionTest, UnsuccessfulCompletionFailsTheSignIn) {
    for (const char* params : {R"({"loginId": "login-1", "success": False})", R"({"loginId": "login-1"})",
                               R"({"loginId": "login-1", "success": "true"})"}) {
        const auto codex = fakeCodex(std::string(loginStart) +
                                     "send({\"method\": \"account/login/completed\", \"params\": " + params +
                                     "})\nhang()\n");
        EXPECT_EQ(session().login(codex, environment), (CodexOAuthError{Kind::signInFailed})) << params;
    }
}

TEST_F(CodexOAuthSessionTest, UnexpectedLoginAnswerFailsBeforeAnyBrowser) {
    for (const char* result :
         {R"({"type": "apiKey", "loginId": "l", "authUrl": "https://a.invalid/"})",
          R"({"type": "chatgpt", "authUrl": "https://a.invalid/"})",
          R"({"type": "chatgpt", "loginId": "l", "authUrl": "not a url"})", R"("chatgpt")"}) {
        const auto codex =
            fakeCodex(std::string("handshake()\nrequest = read()\nsend({\"id\": 2, \"result\": ") + result +
                      "})\nhang()\n");
        EXPECT_EQ(session().login(codex, environment), (CodexOAuthError{Kind::malformedResponse})) << result;
    }
    EXPECT_TRUE(openedURLs.empty());
}

TEST_F(CodexOAuthSessionTest, BrowserThatCannotOpenFails) {
    browserAnswer = false;
    EXPECT_EQ(session().login(fakeCodex(std::string(loginStart) + "hang()\n"), environment),
              (CodexOAuthError{Kind::browserCouldNotOpen}));
}

TEST_F(CodexOAuthSessionTest, RpcErrorsCarryTheirCodeOrMinusOne) {
    const auto withError = [&](const char* error) {
        return fakeCodex(std::string("handshake()\nrequest = read()\nsend({\"id\": 2, \"error\": ") + error +
                         "})\nhang()\n");
    };
    EXPECT_EQ(session().logout(withError(R"({"code": -32600, "message": "no"})"), environment),
              (CodexOAuthError{Kind::rpcError, -32600}));
    EXPECT_EQ(session().logout(withError(R"({"message": "no"})"), environment),
              (CodexOAuthError{Kind::rpcError, -1}));
    EXPECT_EQ(session().logout(withError(R"({"code": "x"})"), environment),
              (CodexOAuthError{Kind::rpcError, -1}));
}

TEST_F(CodexOAuthSessionTest, SignOutSendsLogoutAndAcceptsAnyResult) {
    const auto codex = fakeCodex(R"(
handshake()
request = read()
send({"id": 7, "result": {}})
send({"method": "account/updated", "params": {}})
send({"id": request["id"], "result": None})
hang()
)");
    EXPECT_EQ(session().logout(codex, environment), std::nullopt);
    EXPECT_EQ(requestMethods(), (std::vector<std::string>{"initialize", "initialized", "account/logout"}));
}

TEST_F(CodexOAuthSessionTest, UnansweredSignOutTimesOutAndTheToolIsGone) {
    const auto codex = fakeCodex(R"(
import signal
signal.signal(signal.SIGTERM, signal.SIG_IGN)
handshake()
read()
with open(os.path.join(os.path.dirname(os.path.abspath(__file__)), "pid"), "w") as f:
    f.write(str(os.getpid()))
while True:
    time.sleep(1)
)");
    CodexOAuthSession::Limits limits;
    limits.logoutTimeout = 300ms;
    EXPECT_EQ(session(limits).logout(codex, environment), (CodexOAuthError{Kind::timedOut}));
    std::ifstream pidFile(directory / "pid");
    std::string pid;
    pidFile >> pid;
    ASSERT_FALSE(pid.empty());
    EXPECT_FALSE(fs::exists("/proc/" + pid));
}

TEST_F(CodexOAuthSessionTest, StreamProblemsAreTheirOwnErrors) {
    EXPECT_EQ(session().logout(fakeCodex("read()\nsys.exit(0)\n"), environment),
              (CodexOAuthError{Kind::streamEnded}));
    EXPECT_EQ(session().logout(fakeCodex("read()\nsys.stdout.write('[1]\\n'); sys.stdout.flush()\nhang()\n"),
                               environment),
              (CodexOAuthError{Kind::malformedResponse}));
    CodexOAuthSession::Limits small;
    small.outputLimit = 1000;
    EXPECT_EQ(
        session(small).logout(fakeCodex("read()\nsys.stdout.write('x' * 5000); sys.stdout.flush()\nhang()\n"),
                              environment),
        (CodexOAuthError{Kind::outputLimitExceeded}));
    EXPECT_EQ(session().logout(directory / "missing-codex", environment),
              (CodexOAuthError{Kind::launchFailed}));
}

TEST_F(CodexOAuthSessionTest, CancelEndsASignInWaitingForTheBrowser) {
    const auto codex = fakeCodex(std::string(loginStart) + "hang()\n");
    std::promise<void> browserOpened;
    CodexOAuthSession cancellable(
        [&](const std::string&) {
            browserOpened.set_value();
            return true;
        },
        CodexOAuthSession::Limits{});
    auto result = std::async(std::launch::async, [&] { return cancellable.login(codex, environment); });
    ASSERT_EQ(browserOpened.get_future().wait_for(10s), std::future_status::ready);
    cancellable.cancel();
    ASSERT_EQ(result.wait_for(10s), std::future_status::ready);
    EXPECT_EQ(result.get(), (CodexOAuthError{Kind::streamEnded}));
}

} // namespace
} // namespace gaugewell
