#include "CodexAppServerTransport.h"

#include "CodexPayloads.h"
#include "ProviderKit/CodexAppServer/CodexAppServerConnection.h"

namespace gaugewell {

namespace {

// Sent back to back once the handshake is done.
constexpr std::string_view usageRequests = R"({"id":2,"method":"account/rateLimits/read","params":null})"
                                           "\n"
                                           R"({"id":3,"method":"account/usage/read","params":null})"
                                           "\n";

CodexProviderError providerError(const CodexAppServerFailure& failure) {
    using Kind = CodexProviderError::Kind;
    switch (failure.kind) {
    case CodexAppServerFailure::Kind::launchFailed:
        return Kind::launchFailed;
    case CodexAppServerFailure::Kind::writeFailed:
        return Kind::writeFailed;
    case CodexAppServerFailure::Kind::timedOut:
        return Kind::timedOut;
    case CodexAppServerFailure::Kind::pollFailed:
        return Kind::pollFailed;
    case CodexAppServerFailure::Kind::streamEnded:
        return Kind::streamEnded;
    case CodexAppServerFailure::Kind::outputLimitExceeded:
        return Kind::outputLimitExceeded;
    case CodexAppServerFailure::Kind::malformedLine:
        return Kind::malformedLine;
    case CodexAppServerFailure::Kind::rpcError:
        return CodexProviderError::rpcError(failure.rpcCode.value_or(0));
    }
    return Kind::protocolError;
}

Expected<CodexAppServerResponse, CodexProviderError> exchange(CodexAppServerConnection& connection) {
    if (auto ready = connection.handshake(); !ready) {
        return unexpected(providerError(ready.error()));
    }
    if (auto sent = connection.send(usageRequests); !sent) {
        return unexpected(providerError(sent.error()));
    }
    std::optional<std::string> rateLimits;
    std::optional<std::string> accountUsage;
    bool usageAnswered = false;
    while (!rateLimits || !usageAnswered) {
        auto line = connection.nextLine();
        if (!line) {
            const auto kind = line.error().kind;
            // The rate limits alone are worth showing when the usage answer never comes.
            if (rateLimits && (kind == CodexAppServerFailure::Kind::streamEnded ||
                               kind == CodexAppServerFailure::Kind::timedOut)) {
                break;
            }
            return unexpected(providerError(line.error()));
        }
        const auto envelope = decodeJson<CodexRPCIdentifier>(*line);
        if (!envelope) {
            return unexpected(CodexProviderError(CodexProviderError::Kind::malformedLine));
        }
        if (!envelope->id) {
            continue; // a notification
        }
        if (envelope->error) {
            if (*envelope->id != 3) {
                return unexpected(CodexProviderError::rpcError(envelope->error->code));
            }
            accountUsage.reset();
            usageAnswered = true;
        } else if (*envelope->id == 2) {
            rateLimits = std::move(*line);
        } else if (*envelope->id == 3) {
            accountUsage = std::move(*line);
            usageAnswered = true;
        }
    }
    return CodexAppServerResponse{std::move(*rateLimits), std::move(accountUsage)};
}

} // namespace

Expected<CodexAppServerResponse, CodexProviderError> CodexAppServerTransport::fetchUsage() const {
    auto opened =
        CodexAppServerConnection::open(executable_, environment_, Deadline::after(timeout_), outputLimit_);
    if (!opened) {
        return unexpected(providerError(opened.error()));
    }
    CodexAppServerConnection connection = std::move(opened).value();
    auto result = exchange(connection);
    connection.close(terminationGrace);
    return result;
}

} // namespace gaugewell
