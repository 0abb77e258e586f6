#pragma once

#include "UsageDomain/Date.h"
#include "UsageDomain/JsonCoding.h"

#include <string>
#include <vector>

namespace gaugewell {

// The stored Claude sign-in. Its JSON form has exactly the keys "accessToken", "refreshToken",
// "expiresAt" (seconds since 2001-01-01T00:00:00Z) and "scopes".
struct ClaudeOAuthCredential {
    std::string accessToken;
    std::string refreshToken;
    Date expiresAt;
    std::vector<std::string> scopes;

    bool operator==(const ClaudeOAuthCredential&) const = default;
};

template <> struct JsonCoder<ClaudeOAuthCredential> {
    static JsonValue encode(const ClaudeOAuthCredential& credential);
    static ClaudeOAuthCredential decode(const JsonValue& json, const std::string& path);
};

} // namespace gaugewell
