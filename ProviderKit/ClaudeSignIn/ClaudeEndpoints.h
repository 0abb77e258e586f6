#pragma once

#include "UsageDomain/Expected.h"

#include <map>
#include <string>
#include <string_view>

namespace gaugewell {

enum class ClaudeEndpointsError { invalidSignInURL, invalidPlatformURL, invalidApiURL };

// Names the variable at fault.
std::string_view describe(ClaudeEndpointsError error);

// Where the Claude sign-in page, the OAuth endpoints and the usage endpoint live. Each base URL can be
// replaced through the environment (so that tests reach local fake servers); a replacement must be https,
// or plain http to the loopback interface, with no user info, query or fragment.
class ClaudeEndpoints {
public:
    static constexpr std::string_view signInVariable = "GAUGEWELL_CLAUDE_SIGNIN_URL";
    static constexpr std::string_view platformVariable = "GAUGEWELL_CLAUDE_PLATFORM_URL";
    static constexpr std::string_view apiVariable = "GAUGEWELL_CLAUDE_API_URL";

    static constexpr std::string_view defaultSignInBaseURL = "https://claude.com";
    static constexpr std::string_view defaultPlatformBaseURL = "https://platform.claude.com";
    static constexpr std::string_view defaultApiBaseURL = "https://api.anthropic.com";

    static ClaudeEndpoints production();
    // Variables that are missing or empty keep the default.
    static Expected<ClaudeEndpoints, ClaudeEndpointsError>
    fromEnvironment(const std::map<std::string, std::string>& environment);
    static Expected<ClaudeEndpoints, ClaudeEndpointsError>
    make(std::string_view signInBaseURL, std::string_view platformBaseURL, std::string_view apiBaseURL);

    const std::string& signInBaseURL() const { return signInBase; }
    const std::string& platformBaseURL() const { return platformBase; }
    const std::string& apiBaseURL() const { return apiBase; }

    std::string authorizeURL() const { return signInBase + "/cai/oauth/authorize"; }
    std::string tokenURL() const { return platformBase + "/v1/oauth/token"; }
    std::string revocationURL() const { return platformBase + "/v1/oauth/token/revoke"; }
    std::string successPageURL() const { return platformBase + "/oauth/code/success?app=claude-code"; }
    std::string usageURL() const { return apiBase + "/api/oauth/usage"; }

private:
    ClaudeEndpoints(std::string signInBase, std::string platformBase, std::string apiBase)
        : signInBase(std::move(signInBase))
        , platformBase(std::move(platformBase))
        , apiBase(std::move(apiBase)) {}

    std::string signInBase;
    std::string platformBase;
    std::string apiBase;
};

} // namespace gaugewell
