#pragma once

#include "LocalHttpServer.h"
#include "ProviderKit/ClaudeEndpoints.h"

#include <mutex>
#include <optional>
#include <string>

namespace gaugewell::testing {

// The Claude sign-in page, token, revocation and usage endpoints on one LocalHttpServer.
// The sign-in page answers with a 302 to the request's redirect_uri carrying a code and the request's
// state (or `stateOverride`); the usage endpoint wants the current access token as a bearer.
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

    void setAuthorizationCode(std::string code);
    void setStateOverride(std::optional<std::string> state);
    void setTokenScript(TokenScript script);
    void setUsage(int status, std::string body);
    // The token the usage endpoint accepts; the token script's access token by default.
    void setExpectedAccessToken(std::optional<std::string> token);

    // Where the sign-in page sent the browser last.
    std::optional<std::string> lastRedirectLocation() const;

    static std::string typicalUsageBody();

private:
    LocalHttpServer http;
    mutable std::mutex mutex;
    std::string authorizationCode = "fake-authorization-code-19c4";
    std::optional<std::string> stateOverride;
    TokenScript tokenScript;
    int usageStatus = 200;
    std::string usageBody = typicalUsageBody();
    std::optional<std::string> expectedAccessToken;
    std::optional<std::string> redirectLocation;
};

} // namespace gaugewell::testing
