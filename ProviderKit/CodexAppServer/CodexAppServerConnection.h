#pragma once

#include "Platform/Deadline.h"
#include "ProviderKit/Process/ChildProcess.h"
#include "ProviderKit/Process/Environment.h"
#include "ProviderKit/Process/LineDelimitedJSONReader.h"
#include "UsageDomain/Expected.h"
#include "UsageDomain/JsonValue.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace gaugewell {

// Why a conversation with `codex app-server` ended early. The usage exchange and the sign-in
// each turn these into their own errors.
struct CodexAppServerFailure {
    enum class Kind {
        launchFailed,
        writeFailed,
        timedOut,
        pollFailed,
        streamEnded,
        outputLimitExceeded,
        malformedLine,
        rpcError,
    };

    Kind kind;
    // The JSON-RPC error code of an `rpcError`, when the tool gave one.
    std::optional<std::int64_t> rpcCode = std::nullopt;

    bool operator==(const CodexAppServerFailure&) const = default;
};

// One `codex app-server --stdio` child and the lines between us: every write whole, every read
// within one deadline and one byte cap for the life of the connection. The conversations on top
// (usage, sign-in, sign-out) keep their own steps. Closing, or destroying, ends the child's group.
class CodexAppServerConnection {
public:
    static Expected<CodexAppServerConnection, CodexAppServerFailure>
    open(const std::filesystem::path& executable, const Environment& environment, Deadline deadline,
         std::int64_t outputLimit);

    // "initialize", its answer, then "initialized".
    Status<CodexAppServerFailure> handshake();
    // Whole lines, each ending in a line feed.
    Status<CodexAppServerFailure> send(std::string_view lines);
    Status<CodexAppServerFailure> send(const JsonValue& message);
    // The next non-empty line, without its line feed.
    Expected<std::string, CodexAppServerFailure> nextLine();
    Expected<JsonValue, CodexAppServerFailure> nextObject();
    // Reads up to the answer to `id`, skipping notifications and other answers; an error answer
    // is `rpcError`.
    Expected<JsonValue, CodexAppServerFailure> response(std::int64_t id);

    // For `ChildProcess::signalGroup` from another thread while a read waits.
    pid_t processGroup() const { return child.pid(); }
    // End of input lets a well-behaved server stop by itself; SIGTERM to the group, then SIGKILL
    // after `grace`, stops the rest. The child is reaped before this returns.
    void close(std::chrono::milliseconds grace);

private:
    CodexAppServerConnection(ChildProcess child, Deadline deadline, std::int64_t outputLimit);

    ChildProcess child;
    LineDelimitedJSONReader reader;
};

} // namespace gaugewell
