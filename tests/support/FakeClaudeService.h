#pragma once

#include "LocalHttpServer.h"
#include "ProviderKit/ClaudeSignIn/ClaudeEndpoints.h"

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>

namespace gaugewell::testing {

// The Claude sign-in page, token, revocation, success and usage endpoints on one LocalHttpServer.
// The sign-in page answers with a 302 to the request's redirect_uri carrying a code and the request's
// state (or the overriding one); the usage endpoint wants the issued access token as a bearer.
class FakeClaudeService {
public:
    struct TokenScript {
        int status = 200;
        std::string accessToken = "fake-access-token-7b1f0c2e";
        std::optional<std::string> refreshToken = std::string("fake-refresh-token-5d93aa41");
        std::int64_t expiresIn = 3600;
        std::optional<std::string> scope = std::string("org:create_api_key user:profile");
    };

    FakeClaudeService();

    LocalHttpServer& server() { return http; }
    ClaudeEndpoints endpoints() const;

    void setAuthorizationCode(std::string code) {
        std::lock_guard lock(mutex);
        authorizationCode = std::move(code);
    }
    void setStateOverride(std::string state) {
        std::lock_guard lock(mutex);
        stateOverride = std::move(state);
    }
    void setTokenScript(TokenScript script) {
        std::lock_guard lock(mutex);
        tokenScript = std::move(script);
    }
    void setUsage(int status, std::string body,
                  std::vector<std::pair<std::string, std::string>> headers = {}) {
        std::lock_guard lock(mutex);
        usage = {status, std::move(body), "application/json", std::move(headers)};
    }
    // Where the sign-in page sent the browser last.
    std::optional<std::string> lastRedirectLocation() const {
        std::lock_guard lock(mutex);
        return redirectLocation;
    }

    static std::string typicalUsageBody();

private:
    LocalHttpServer http;
    mutable std::mutex mutex;
    std::string authorizationCode = "fake-authorization-code-19c4";
    std::optional<std::string> stateOverride;
    TokenScript tokenScript;
    HttpAnswer usage{200, typicalUsageBody()};
    std::optional<std::string> redirectLocation;
};

} // namespace gaugewell::testing
