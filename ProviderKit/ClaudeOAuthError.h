#pragma once

#include "UsageDomain/RawValue.h"

namespace gaugewell {

// Why a Claude sign-in, token or sign-out operation failed. No case carries text: the server's answer,
// tokens and secret-store details never travel with an error. The connection layer turns these into
// sentences for the user.
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

template <> struct RawValues<ClaudeOAuthError> {
    static constexpr std::array<std::string_view, 8> names{
        "browserCouldNotOpen", "callbackFailed",     "invalidCallback",         "stateMismatch",
        "tokenExchangeFailed", "tokenRefreshFailed", "credentialStorageFailed", "signedOut"};
};

} // namespace gaugewell
