#include "ProviderKit/CodexSignIn/CodexOAuthSession.h"

#include "ProviderKit/CodexAppServer/CodexAppServerConnection.h"

#include <cctype>
#include <cstdint>

namespace gaugewell {

namespace {

using Kind = CodexOAuthError::Kind;

CodexOAuthError oauthError(const CodexAppServerFailure& failure) {
    switch (failure.kind) {
    case CodexAppServerFailure::Kind::launchFailed:
        return {Kind::launchFailed};
    case CodexAppServerFailure::Kind::writeFailed:
        return {Kind::writeFailed};
    case CodexAppServerFailure::Kind::timedOut:
        return {Kind::timedOut};
    case CodexAppServerFailure::Kind::pollFailed:
        return {Kind::pollFailed};
    case CodexAppServerFailure::Kind::streamEnded:
        return {Kind::streamEnded};
    case CodexAppServerFailure::Kind::outputLimitExceeded:
        return {Kind::outputLimitExceeded};
    case CodexAppServerFailure::Kind::malformedLine:
        return {Kind::malformedResponse};
    case CodexAppServerFailure::Kind::rpcError: {
        const auto code = failure.rpcCode;
        const bool fits = code && *code >= INT32_MIN && *code <= INT32_MAX;
        return {Kind::rpcError, fits ? static_cast<int>(*code) : -1};
    }
    }
    return {Kind::malformedResponse};
}

// A scheme, a colon and something after it, with nothing a URL cannot hold.
bool looksLikeURL(const std::string& text) {
    const auto colon = text.find(':');
    if (colon == std::string::npos || colon == 0 || colon + 1 == text.size() || !std::isalpha(text[0])) {
        return false;
    }
    for (std::size_t index = 0; index < colon; ++index) {
        const char c = text[index];
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '+' && c != '-' && c != '.') {
            return false;
        }
    }
    for (const unsigned char c : text) {
        if (c <= 0x20 || c == 0x7f) {
            return false;
        }
    }
    return true;
}

// The sign-in steps see the connection's failures as their own errors.
class Conversation {
public:
    explicit Conversation(CodexAppServerConnection& connection)
        : connection(connection) {}

    std::optional<CodexOAuthError> handshake() { return failure(connection.handshake()); }
    std::optional<CodexOAuthError> send(const JsonValue& message) {
        return failure(connection.send(message));
    }
    Expected<JsonValue, CodexOAuthError> next() { return objectOrError(connection.nextObject()); }
    Expected<JsonValue, CodexOAuthError> response(std::int64_t id) {
        return objectOrError(connection.response(id));
    }

private:
    static std::optional<CodexOAuthError> failure(const Status<CodexAppServerFailure>& status) {
        return status ? std::nullopt : std::optional(oauthError(status.error()));
    }
    static Expected<JsonValue, CodexOAuthError>
    objectOrError(Expected<JsonValue, CodexAppServerFailure> object) {
        if (!object) {
            return unexpected(oauthError(object.error()));
        }
        return std::move(object).value();
    }

    CodexAppServerConnection& connection;
};

std::optional<CodexOAuthError> signIn(Conversation& conversation,
                                      const CodexOAuthSession::BrowserOpener& opener) {
    if (auto error = conversation.handshake()) {
        return error;
    }
    const JsonValue start(JsonValue::Object{
        {"id", JsonValue::number(std::int64_t{2})},
        {"method", JsonValue("account/login/start")},
        {"params", JsonValue(JsonValue::Object{{"type", JsonValue("chatgpt")},
                                               {"useHostedLoginSuccessPage", JsonValue(true)}})},
    });
    if (auto error = conversation.send(start)) {
        return error;
    }
    const auto answer = conversation.response(2);
    if (!answer) {
        return answer.error();
    }
    const JsonValue* result = answer->find("result");
    const JsonValue* type = result != nullptr ? result->find("type") : nullptr;
    const JsonValue* loginID = result != nullptr ? result->find("loginId") : nullptr;
    const JsonValue* authURL = result != nullptr ? result->find("authUrl") : nullptr;
    if (type == nullptr || type->stringValue() == nullptr || *type->stringValue() != "chatgpt" ||
        loginID == nullptr || loginID->stringValue() == nullptr || authURL == nullptr ||
        authURL->stringValue() == nullptr || !looksLikeURL(*authURL->stringValue())) {
        return CodexOAuthError{Kind::malformedResponse};
    }
    if (!opener(*authURL->stringValue())) {
        return CodexOAuthError{Kind::browserCouldNotOpen};
    }
    while (true) {
        const auto object = conversation.next();
        if (!object) {
            return object.error();
        }
        const JsonValue* method = object->find("method");
        const JsonValue* params = object->find("params");
        if (method == nullptr || method->stringValue() == nullptr ||
            *method->stringValue() != "account/login/completed" || params == nullptr ||
            params->objectValue() == nullptr) {
            continue;
        }
        const JsonValue* completedID = params->find("loginId");
        if (completedID != nullptr && completedID->stringValue() != nullptr &&
            *completedID->stringValue() != *loginID->stringValue()) {
            continue; // another sign-in's completion
        }
        const JsonValue* success = params->find("success");
        if (success != nullptr && success->boolValue() == true) {
            return std::nullopt;
        }
        return CodexOAuthError{Kind::signInFailed};
    }
}

std::optional<CodexOAuthError> signOut(Conversation& conversation) {
    if (auto error = conversation.handshake()) {
        return error;
    }
    const JsonValue logout(JsonValue::Object{
        {"id", JsonValue::number(std::int64_t{2})},
        {"method", JsonValue("account/logout")},
        {"params", JsonValue()},
    });
    if (auto error = conversation.send(logout)) {
        return error;
    }
    const auto answer = conversation.response(2);
    return answer ? std::nullopt : std::optional(answer.error());
}

} // namespace

CodexOAuthSession::CodexOAuthSession(BrowserOpener browserOpener)
    : CodexOAuthSession(std::move(browserOpener), Limits{}) {}

CodexOAuthSession::CodexOAuthSession(BrowserOpener browserOpener, Limits limits)
    : browserOpener(std::move(browserOpener))
    , limits(limits) {}

std::optional<CodexOAuthError> CodexOAuthSession::login(const std::filesystem::path& executable,
                                                        const Environment& environment) {
    const std::lock_guard lock(operation);
    return converse(Purpose::login, executable, environment, limits.loginTimeout);
}

std::optional<CodexOAuthError> CodexOAuthSession::logout(const std::filesystem::path& executable,
                                                         const Environment& environment) {
    const std::lock_guard lock(operation);
    return converse(Purpose::logout, executable, environment, limits.logoutTimeout);
}

void CodexOAuthSession::cancel() {
    const std::lock_guard lock(runningMutex);
    // The reader then sees the end of the stream; the owning call reaps the child.
    ChildProcess::signalGroup(runningGroup);
}

std::optional<CodexOAuthError> CodexOAuthSession::converse(Purpose purpose,
                                                           const std::filesystem::path& executable,
                                                           const Environment& environment,
                                                           std::chrono::milliseconds timeout) {
    auto opened =
        CodexAppServerConnection::open(executable, environment, Deadline::after(timeout), limits.outputLimit);
    if (!opened) {
        return oauthError(opened.error());
    }
    CodexAppServerConnection connection = std::move(opened).value();
    {
        const std::lock_guard lock(runningMutex);
        runningGroup = connection.processGroup();
    }
    Conversation conversation(connection);
    const auto result =
        purpose == Purpose::login ? signIn(conversation, browserOpener) : signOut(conversation);

    {
        const std::lock_guard lock(runningMutex);
        runningGroup = -1;
    }
    connection.close(ChildProcess::defaultTerminationGrace);
    return result;
}

} // namespace gaugewell
