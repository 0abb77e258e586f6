#pragma once

#include "ProviderKit/ClaudeSignIn/ClaudeAccountAuthenticating.h"
#include "ProviderKit/CodexSignIn/CodexAccountAuthenticating.h"
#include "ProviderKit/Process/CommandRunning.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <vector>

// Stand-ins for what the authentication manager talks to.
namespace gaugewell::testing {

namespace fs = std::filesystem;

struct RecordedRun {
    std::filesystem::path executable;
    std::vector<std::string> arguments;
    Environment environment;
};

// Answers by argument list; records every run.
class FakeCommandRunner : public CommandRunning {
public:
    std::map<std::vector<std::string>, Expected<CommandOutput, ProcessSupportError>> answers;
    mutable std::vector<RecordedRun> runs;

    Expected<CommandOutput, ProcessSupportError> run(const std::filesystem::path& executable,
                                                     const std::vector<std::string>& arguments,
                                                     const Environment& environment,
                                                     std::chrono::milliseconds, std::int64_t) const override {
        runs.push_back({executable, arguments, environment});
        const auto answer = answers.find(arguments);
        return answer == answers.end() ? Expected<CommandOutput, ProcessSupportError>(
                                             unexpected(ProcessSupportError::launchFailed))
                                       : answer->second;
    }
    int count(const std::vector<std::string>& arguments) const {
        return static_cast<int>(std::count_if(runs.begin(), runs.end(),
                                              [&](const auto& run) { return run.arguments == arguments; }));
    }
};

class FakeClaude : public ClaudeAccountAuthenticating {
public:
    bool signedIn = false;
    bool loginSucceeds = false;
    bool logoutSucceeds = true;
    bool isSignedIn() override { return signedIn; }
    bool login() override { return signedIn = loginSucceeds; }
    bool logout() override {
        if (logoutSucceeds) {
            signedIn = false;
        }
        return logoutSucceeds;
    }
    void cancelLogin() override {}
};

class FakeCodexSession : public CodexAccountAuthenticating {
public:
    std::optional<CodexOAuthError> loginResult;
    std::optional<CodexOAuthError> logoutResult;
    std::function<void()> onLogin;
    std::optional<CodexOAuthError> login(const std::filesystem::path&, const Environment&) override {
        if (onLogin) {
            onLogin();
        }
        return loginResult;
    }
    std::optional<CodexOAuthError> logout(const std::filesystem::path&, const Environment&) override {
        return logoutResult;
    }
    void cancel() override {}
};

} // namespace gaugewell::testing
