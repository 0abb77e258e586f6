#include "ProviderKit/CodexAppServer/CodexAppServerConnection.h"

#include <cerrno>
#include <unistd.h>

namespace gaugewell {

namespace {

using Kind = CodexAppServerFailure::Kind;

constexpr std::string_view initializeRequest =
    R"({"id":1,"method":"initialize","params":{"clientInfo":{"name":"gaugewell","version":"0.1.0"},)"
    R"("capabilities":{"experimentalApi":true}}})"
    "\n";
constexpr std::string_view initializedNotification = R"({"method":"initialized","params":{}})"
                                                     "\n";

CodexAppServerFailure readerFailure(LineDelimitedJSONReaderError error) {
    switch (error) {
    case LineDelimitedJSONReaderError::timedOut:
        return {Kind::timedOut};
    case LineDelimitedJSONReaderError::pollFailed:
        return {Kind::pollFailed};
    case LineDelimitedJSONReaderError::streamEnded:
        return {Kind::streamEnded};
    case LineDelimitedJSONReaderError::outputLimitExceeded:
        return {Kind::outputLimitExceeded};
    case LineDelimitedJSONReaderError::malformedResponse:
        return {Kind::malformedLine};
    }
    return {Kind::malformedLine};
}

} // namespace

CodexAppServerConnection::CodexAppServerConnection(ChildProcess child, Deadline deadline,
                                                   std::int64_t outputLimit)
    : child(std::move(child))
    , reader(this->child.outputDescriptor(), deadline, outputLimit) {}

Expected<CodexAppServerConnection, CodexAppServerFailure>
CodexAppServerConnection::open(const std::filesystem::path& executable, const Environment& environment,
                               Deadline deadline, std::int64_t outputLimit) {
    auto spawned = ChildProcess::spawn(
        executable.string(), {"app-server", "--stdio"}, environment,
        {ChildProcess::Stream::pipe, ChildProcess::Stream::pipe, ChildProcess::Stream::null});
    if (!spawned) {
        return unexpected(CodexAppServerFailure{Kind::launchFailed});
    }
    return CodexAppServerConnection(std::move(spawned).value(), deadline, outputLimit);
}

Status<CodexAppServerFailure> CodexAppServerConnection::send(std::string_view lines) {
    // A write to a child that has gone fails with EPIPE (SIGPIPE is ignored process-wide).
    while (!lines.empty()) {
        const ssize_t written = ::write(child.inputDescriptor(), lines.data(), lines.size());
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return unexpected(CodexAppServerFailure{Kind::writeFailed});
        }
        lines.remove_prefix(static_cast<std::size_t>(written));
    }
    return {};
}

Status<CodexAppServerFailure> CodexAppServerConnection::send(const JsonValue& message) {
    return send(message.serialized() + "\n");
}

Expected<std::string, CodexAppServerFailure> CodexAppServerConnection::nextLine() {
    auto line = reader.nextLine();
    if (!line) {
        return unexpected(readerFailure(line.error()));
    }
    return std::move(line).value();
}

Expected<JsonValue, CodexAppServerFailure> CodexAppServerConnection::nextObject() {
    auto object = reader.nextObject();
    if (!object) {
        return unexpected(readerFailure(object.error()));
    }
    return std::move(object).value();
}

Expected<JsonValue, CodexAppServerFailure> CodexAppServerConnection::response(std::int64_t id) {
    while (true) {
        auto object = nextObject();
        if (!object) {
            return object;
        }
        const JsonValue* objectID = object->find("id");
        if (objectID == nullptr || objectID->int64Value() != id) {
            continue;
        }
        if (const JsonValue* error = object->find("error");
            error != nullptr && error->objectValue() != nullptr) {
            const JsonValue* code = error->find("code");
            return unexpected(
                CodexAppServerFailure{Kind::rpcError, code != nullptr ? code->int64Value() : std::nullopt});
        }
        return object;
    }
}

Status<CodexAppServerFailure> CodexAppServerConnection::handshake() {
    if (auto sent = send(initializeRequest); !sent) {
        return sent;
    }
    if (auto answer = response(1); !answer) {
        return unexpected(answer.error());
    }
    return send(initializedNotification);
}

void CodexAppServerConnection::close(std::chrono::milliseconds grace) {
    child.closeInput();
    child.closeOutput();
    child.terminate(grace);
}

} // namespace gaugewell
