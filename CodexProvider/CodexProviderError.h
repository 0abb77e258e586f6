#pragma once

#include <cstdint>

namespace gaugewell {

// Why a Codex exchange failed. Carries no text of the tool's; the RPC code is kept for tests
// and is never shown anywhere.
struct CodexProviderError {
    enum class Kind {
        rpcError,
        executableMissing,
        launchFailed,
        timedOut,
        outputLimitExceeded,
        protocolError,
        streamEnded,
        malformedLine,
        writeFailed,
        pollFailed,
    };

    CodexProviderError(Kind kind)
        : kind(kind) {}
    static CodexProviderError rpcError(std::int64_t code) {
        CodexProviderError error(Kind::rpcError);
        error.code = code;
        return error;
    }

    Kind kind;
    std::int64_t code = 0; // the JSON-RPC error code; meaningful for rpcError only

    bool operator==(const CodexProviderError&) const = default;
};

} // namespace gaugewell
