#pragma once

namespace gaugewell {

// Why a Codex sign-in or sign-out did not complete. No text: the authentication manager
// turns these into fixed details.
struct CodexOAuthError {
    enum class Kind {
        rpcError,
        browserCouldNotOpen,
        launchFailed,
        malformedResponse,
        outputLimitExceeded,
        pollFailed,
        signInFailed,
        streamEnded,
        timedOut,
        writeFailed,
    };

    Kind kind;
    int rpcCode = -1; // the JSON-RPC error code for `rpcError`; -1 when the tool gave none

    bool operator==(const CodexOAuthError&) const = default;
};

} // namespace gaugewell
