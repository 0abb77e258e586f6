#include "ProviderKit/CodexSignIn/CodexOAuthSession.h"

#include "ProviderKit/Process/ChildProcess.h"
#include "ProviderKit/Process/LineDelimitedJSONReader.h"

#include <cerrno>
#include <csignal>
#include <unistd.h>

namespace gaugewell {

namespace {

using Kind = CodexOAuthError::Kind;

CodexOAuthError readerError(LineDelimitedJSONReaderError error) {
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
        return {Kind::malformedResponse};
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

class Conversation {
public:
    Conversation(ChildProcess& child, LineDelimitedJSONReader& reader)
        : child(child)
        , reader(reader) {}

    std::optional<CodexOAuthError> send(const JsonValue& message) {
        const std::string line = message.serialized() + "\n";
        std::size_t written = 0;
        while (written < line.size()) {
            const ssize_t count =
                ::write(child.inputDescriptor(), line.data() + written, line.size() - written);
            if (count < 0 && errno == EINTR) {
                continue;
            }
            if (count <= 0) {
                return CodexOAuthError{Kind::writeFailed};
            }
            written += static_cast<std::size_t>(count);
        }
        return std::nullopt;
    }

    Expected<JsonValue, CodexOAuthError> next() {
        auto object = reader.nextObject();
        if (!object) {
            return unexpected(readerError(object.error()));
        }
        return std::move(object).value();
    }

    // Skips notifications and other ids; an "error" object becomes `rpcError`.
    Expected<JsonValue, CodexOAuthError> response(std::int64_t id) {
        while (true) {
            auto object = next();
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
                const auto value = code != nullptr ? code->int64Value() : std::nullopt;
                const bool fits = value && *value >= INT32_MIN && *value <= INT32_MAX;
                return unexpected(CodexOAuthError{Kind::rpcError, fits ? static_cast<int>(*value) : -1});
            }
            return object;
        }
    }

    std::optional<CodexOAuthError> handshake() {
        const JsonValue initialize(JsonValue::Object{
            {"id", JsonValue::number(std::int64_t{1})},
            {"method", JsonValue("initialize")},
            {"params",
             JsonValue(JsonValue::Object{
                 {"clientInfo", JsonValue(JsonValue::Object{{"name", JsonValue("gaugewell")},
                                                            {"version", JsonValue("0.1.0")}})},
                 {"capabilities", JsonValue(JsonValue::Object{{"experimentalApi", JsonValue(true)}})},
             })},
        });
        if (auto error = send(initialize)) {
            return error;
        }
        if (auto answer = response(1); !answer) {
            return answer.error();
        }
        return send(JsonValue(JsonValue::Object{{"method", JsonValue("initialized")},
                                                {"params", JsonValue(JsonValue::Object{})}}));
    }

private:
    ChildProcess& child;
    LineDelimitedJSONReader& reader;
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
    if (runningChild > 0) {
        // The reader then sees the end of the stream; the owning call reaps the child.
        ::kill(runningChild, SIGTERM);
    }
}

std::optional<CodexOAuthError> CodexOAuthSession::converse(Purpose purpose,
                                                           const std::filesystem::path& executable,
                                                           const Environment& environment,
                                                           std::chrono::milliseconds timeout) {
    auto spawned = ChildProcess::spawn(
        executable, {"app-server", "--stdio"}, environment,
        {ChildProcess::Stream::pipe, ChildProcess::Stream::pipe, ChildProcess::Stream::null});
    if (!spawned) {
        return CodexOAuthError{Kind::launchFailed};
    }
    ChildProcess child = std::move(spawned).value();
    {
        const std::lock_guard lock(runningMutex);
        runningChild = child.pid();
    }
    LineDelimitedJSONReader reader(child.outputDescriptor(), LineDelimitedJSONReader::Clock::now() + timeout,
                                   limits.outputLimit);
    Conversation conversation(child, reader);
    const auto result =
        purpose == Purpose::login ? signIn(conversation, browserOpener) : signOut(conversation);

    {
        const std::lock_guard lock(runningMutex);
        runningChild = -1;
    }
    child.closeInput();
    child.closeOutput();
    child.terminate();
    return result;
}

} // namespace gaugewell
