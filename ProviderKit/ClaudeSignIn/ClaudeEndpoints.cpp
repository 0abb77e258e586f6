#include "ProviderKit/ClaudeSignIn/ClaudeEndpoints.h"

#include "ProviderKit/Http/HttpUrl.h"

#include <optional>

namespace gaugewell {

namespace {

// A base URL without its trailing slashes, or absent when it may not be used.
std::optional<std::string> validatedBase(std::string_view text) {
    const auto url = parseHttpUrl(text);
    if (!url || url->hasUserInfo || url->hasQuery || url->hasFragment || !url->isSecureOrLoopback()) {
        return std::nullopt;
    }
    // Characters that curl would accept but that cannot be part of a clean base.
    for (const char c : text) {
        if (static_cast<unsigned char>(c) <= 0x20 || static_cast<unsigned char>(c) >= 0x7f) {
            return std::nullopt;
        }
    }
    std::string base(text);
    while (!base.empty() && base.back() == '/') {
        base.pop_back();
    }
    return base;
}

} // namespace

std::string_view describe(ClaudeEndpointsError error) {
    switch (error) {
    case ClaudeEndpointsError::invalidSignInURL:
        return "GAUGEWELL_CLAUDE_SIGNIN_URL must be an https:// base URL (http:// only for a loopback host)";
    case ClaudeEndpointsError::invalidPlatformURL:
        return "GAUGEWELL_CLAUDE_PLATFORM_URL must be an https:// base URL (http:// only for a loopback "
               "host)";
    case ClaudeEndpointsError::invalidApiURL:
        break;
    }
    return "GAUGEWELL_CLAUDE_API_URL must be an https:// base URL (http:// only for a loopback host)";
}

ClaudeEndpoints ClaudeEndpoints::production() {
    return ClaudeEndpoints(std::string(defaultSignInBaseURL), std::string(defaultPlatformBaseURL),
                           std::string(defaultApiBaseURL));
}

Expected<ClaudeEndpoints, ClaudeEndpointsError> ClaudeEndpoints::make(std::string_view signInBaseURL,
                                                                      std::string_view platformBaseURL,
                                                                      std::string_view apiBaseURL) {
    auto signIn = validatedBase(signInBaseURL);
    if (!signIn) {
        return unexpected(ClaudeEndpointsError::invalidSignInURL);
    }
    auto platform = validatedBase(platformBaseURL);
    if (!platform) {
        return unexpected(ClaudeEndpointsError::invalidPlatformURL);
    }
    auto api = validatedBase(apiBaseURL);
    if (!api) {
        return unexpected(ClaudeEndpointsError::invalidApiURL);
    }
    return ClaudeEndpoints(std::move(*signIn), std::move(*platform), std::move(*api));
}

Expected<ClaudeEndpoints, ClaudeEndpointsError>
ClaudeEndpoints::fromEnvironment(const std::map<std::string, std::string>& environment) {
    auto value = [&](std::string_view name, std::string_view fallback) -> std::string_view {
        const auto found = environment.find(std::string(name));
        if (found == environment.end() || found->second.empty()) {
            return fallback;
        }
        return found->second;
    };
    return make(value(signInVariable, defaultSignInBaseURL), value(platformVariable, defaultPlatformBaseURL),
                value(apiVariable, defaultApiBaseURL));
}

} // namespace gaugewell
