#pragma once

#include "ProviderKit/CodexSignIn/CodexAccountAuthenticating.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <sys/types.h>

namespace gaugewell {

// Signs in to Codex (ChatGPT) or out of it by talking to `codex app-server --stdio`: the
// handshake, then "account/login/start" and the wait for "account/login/completed", or
// "account/logout". One child per call, never outliving it. Calls are serialised.
class CodexOAuthSession final : public CodexAccountAuthenticating {
public:
    // Hands a URL to the user's browser; true when it was handed over.
    using BrowserOpener = std::function<bool(const std::string& url)>;

    struct Limits {
        std::chrono::milliseconds loginTimeout{std::chrono::seconds(300)};
        std::chrono::milliseconds logoutTimeout{std::chrono::seconds(15)};
        std::int64_t outputLimit = 524288;
    };

    explicit CodexOAuthSession(BrowserOpener browserOpener);
    CodexOAuthSession(BrowserOpener browserOpener, Limits limits);

    std::optional<CodexOAuthError> login(const std::filesystem::path& executable,
                                         const Environment& environment) override;
    std::optional<CodexOAuthError> logout(const std::filesystem::path& executable,
                                          const Environment& environment) override;

    // Ends a sign-in or sign-out in progress from any thread: its child is terminated and
    // the call returns an error. A call that starts afterwards is not affected.
    void cancel() override;

private:
    enum class Purpose { login, logout };
    std::optional<CodexOAuthError> converse(Purpose purpose, const std::filesystem::path& executable,
                                            const Environment& environment,
                                            std::chrono::milliseconds timeout);

    const BrowserOpener browserOpener;
    const Limits limits;
    std::mutex operation;
    std::mutex runningMutex;
    pid_t runningGroup = -1;
};

} // namespace gaugewell
