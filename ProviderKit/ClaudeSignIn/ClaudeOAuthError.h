#pragma once

#include <string_view>

namespace gaugewell {

// Why a Claude sign-in, token or sign-out operation failed. No case carries text: the server's answer,
// tokens and secret-store details never travel with an error. The connection layer shows its own
// sentence per operation; `describe` is for logs and tests.
enum class ClaudeOAuthError {
    browserCouldNotOpen,
    callbackFailed,
    invalidCallback,
    stateMismatch,
    tokenExchangeFailed,
    tokenRefreshFailed,
    credentialStorageFailed,
    signedOut,
};

std::string_view describe(ClaudeOAuthError error);

} // namespace gaugewell
