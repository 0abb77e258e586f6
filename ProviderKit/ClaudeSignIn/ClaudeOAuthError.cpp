#include "ProviderKit/ClaudeSignIn/ClaudeOAuthError.h"

namespace gaugewell {

std::string_view describe(ClaudeOAuthError error) {
    switch (error) {
    case ClaudeOAuthError::browserCouldNotOpen:
        return "The browser could not be opened.";
    case ClaudeOAuthError::callbackFailed:
        return "The sign-in did not come back from the browser.";
    case ClaudeOAuthError::invalidCallback:
        return "The browser came back with a malformed sign-in answer.";
    case ClaudeOAuthError::stateMismatch:
        return "The sign-in answer belongs to another sign-in.";
    case ClaudeOAuthError::tokenExchangeFailed:
        return "Claude did not issue a token for this sign-in.";
    case ClaudeOAuthError::tokenRefreshFailed:
        return "Claude did not renew the access token.";
    case ClaudeOAuthError::credentialStorageFailed:
        return "The Claude credential could not be read from or written to the keyring.";
    case ClaudeOAuthError::signedOut:
        break;
    }
    return "Not signed in to Claude.";
}

} // namespace gaugewell
