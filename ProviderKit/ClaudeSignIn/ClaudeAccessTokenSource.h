#pragma once

#include "ProviderKit/ClaudeSignIn/ClaudeOAuthError.h"
#include "UsageDomain/Expected.h"

#include <string>

namespace gaugewell {

// What the Claude usage provider needs of the sign-in: whether there is one, and a token to send.
class ClaudeAccessTokenSource {
public:
    virtual ~ClaudeAccessTokenSource() = default;

    // Reads the stored state only; never touches the network.
    virtual bool isSignedIn() = 0;
    // A token valid for a while longer, refreshed first when needed. `signedOut` when there is no
    // credential, `tokenRefreshFailed` when a needed refresh fails.
    virtual Expected<std::string, ClaudeOAuthError> validAccessToken() = 0;
};

} // namespace gaugewell
