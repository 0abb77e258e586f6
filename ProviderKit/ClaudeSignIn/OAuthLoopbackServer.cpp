#include "ProviderKit/ClaudeSignIn/OAuthLoopbackServer.h"

#include "Platform/Deadline.h"
#include "Platform/SecureWipe.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <fcntl.h>
#include <netinet/in.h>
#include <optional>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace gaugewell {

namespace {

enum class Readiness { ready, timedOut, woken, failed };

// Waits until `descriptor` is readable, the wake pipe is written, or the deadline passes.
Readiness waitReadable(int descriptor, int wakeDescriptor, Deadline deadline) {
    for (;;) {
        pollfd fds[2] = {{descriptor, POLLIN, 0}, {wakeDescriptor, POLLIN, 0}};
        const int count = ::poll(fds, 2, deadline.pollMilliseconds());
        if (count < 0) {
            if (errno == EINTR) {
                continue;
            }
            return Readiness::failed;
        }
        if (fds[1].revents != 0) {
            return Readiness::woken;
        }
        if (count == 0) {
            return Readiness::timedOut;
        }
        return Readiness::ready;
    }
}

bool isUnreserved(unsigned char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '.' || c == '_' || c == '~';
}

bool isSubDelimiter(unsigned char c) {
    return std::string_view("!$&'()*+,;=").find(static_cast<char>(c)) != std::string_view::npos;
}

bool isHexDigit(unsigned char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

int hexValue(unsigned char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    return (c | 0x20) - 'a' + 10;
}

// Every character is allowed by `allowed` or starts a well-formed percent escape.
template <class Allowed> bool isValidComponent(std::string_view text, Allowed allowed) {
    for (std::size_t index = 0; index < text.size(); ++index) {
        const auto c = static_cast<unsigned char>(text[index]);
        if (c == '%') {
            if (index + 2 >= text.size() || !isHexDigit(static_cast<unsigned char>(text[index + 1])) ||
                !isHexDigit(static_cast<unsigned char>(text[index + 2]))) {
                return false;
            }
            index += 2;
        } else if (!allowed(c)) {
            return false;
        }
    }
    return true;
}

bool isPathCharacter(unsigned char c) {
    return isUnreserved(c) || isSubDelimiter(c) || c == ':' || c == '@' || c == '/';
}

bool isQueryCharacter(unsigned char c) {
    return isPathCharacter(c) || c == '?';
}

bool isValidUtf8(std::string_view text) {
    std::size_t index = 0;
    while (index < text.size()) {
        const auto lead = static_cast<unsigned char>(text[index]);
        std::size_t length = 0;
        std::uint32_t codePoint = 0;
        if (lead < 0x80) {
            ++index;
            continue;
        } else if ((lead & 0xe0) == 0xc0) {
            length = 2;
            codePoint = lead & 0x1f;
        } else if ((lead & 0xf0) == 0xe0) {
            length = 3;
            codePoint = lead & 0x0f;
        } else if ((lead & 0xf8) == 0xf0) {
            length = 4;
            codePoint = lead & 0x07;
        } else {
            return false;
        }
        if (index + length > text.size()) {
            return false;
        }
        for (std::size_t offset = 1; offset < length; ++offset) {
            const auto next = static_cast<unsigned char>(text[index + offset]);
            if ((next & 0xc0) != 0x80) {
                return false;
            }
            codePoint = (codePoint << 6) | (next & 0x3f);
        }
        const std::uint32_t minimum = length == 2 ? 0x80 : length == 3 ? 0x800 : 0x10000;
        if (codePoint < minimum || codePoint > 0x10ffff || (codePoint >= 0xd800 && codePoint <= 0xdfff)) {
            return false;
        }
        index += length;
    }
    return true;
}

// Escapes have been validated already; absent when the result is not UTF-8 text.
std::optional<std::string> percentDecoded(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (text[index] == '%' && index + 2 < text.size()) {
            result.push_back(static_cast<char>(hexValue(static_cast<unsigned char>(text[index + 1])) * 16 +
                                               hexValue(static_cast<unsigned char>(text[index + 2]))));
            index += 2;
        } else {
            result.push_back(text[index]);
        }
    }
    if (!isValidUtf8(result)) {
        return std::nullopt;
    }
    return result;
}

struct TargetComponents {
    std::optional<std::string> path;
    std::optional<std::string> query;
};

// Reads "http://localhost" + target the way a URL components parser does: authority up to the first
// "/", "?" or "#", then path, query and fragment, each restricted to its RFC 3986 characters.
std::optional<TargetComponents> parseTarget(std::string_view target) {
    const std::string url = "http://localhost" + std::string(target);
    std::string_view rest = std::string_view(url).substr(7);

    const std::size_t authorityEnd = std::min(rest.find_first_of("/?#"), rest.size());
    std::string_view authority = rest.substr(0, authorityEnd);
    rest.remove_prefix(authorityEnd);
    if (const auto at = authority.rfind('@'); at != std::string_view::npos) {
        const auto userInfo = authority.substr(0, at);
        if (!isValidComponent(
                userInfo, [](unsigned char c) { return isUnreserved(c) || isSubDelimiter(c) || c == ':'; })) {
            return std::nullopt;
        }
        authority.remove_prefix(at + 1);
    }
    std::string_view host = authority;
    if (const auto colon = authority.rfind(':');
        colon != std::string_view::npos && authority.find(']', colon) == std::string_view::npos) {
        const auto portText = authority.substr(colon + 1);
        if (!std::all_of(portText.begin(), portText.end(), [](char c) { return c >= '0' && c <= '9'; })) {
            return std::nullopt;
        }
        host = authority.substr(0, colon);
    }
    if (host.empty() || !isValidComponent(host, [](unsigned char c) {
            return isUnreserved(c) || isSubDelimiter(c) || c == '[' || c == ']' || c == ':';
        })) {
        return std::nullopt;
    }

    std::string_view fragment;
    if (const auto hash = rest.find('#'); hash != std::string_view::npos) {
        fragment = rest.substr(hash + 1);
        rest = rest.substr(0, hash);
    }
    TargetComponents components;
    std::string_view path = rest;
    if (const auto question = rest.find('?'); question != std::string_view::npos) {
        path = rest.substr(0, question);
        components.query = std::string(rest.substr(question + 1));
    }
    if (!isValidComponent(path, isPathCharacter) || !isValidComponent(fragment, isQueryCharacter) ||
        (components.query && !isValidComponent(*components.query, isQueryCharacter))) {
        return std::nullopt;
    }
    components.path = percentDecoded(path);
    return components;
}

struct QueryValues {
    std::optional<std::string> code;
    std::optional<std::string> state;
};

QueryValues queryValues(std::string_view query) {
    QueryValues values;
    bool sawCode = false;
    bool sawState = false;
    std::size_t start = 0;
    while (start <= query.size()) {
        const std::size_t end = std::min(query.find('&', start), query.size());
        const std::string_view item = query.substr(start, end - start);
        const std::size_t equals = item.find('=');
        const auto name = percentDecoded(item.substr(0, equals));
        std::optional<std::string> value;
        if (equals != std::string_view::npos) {
            value = percentDecoded(item.substr(equals + 1));
        }
        // Only the first item of each name counts, even when its value is missing.
        if (name == "code" && !sawCode) {
            sawCode = true;
            values.code = std::move(value);
        } else if (name == "state" && !sawState) {
            sawState = true;
            values.state = std::move(value);
        }
        start = end + 1;
    }
    return values;
}

} // namespace

Expected<OAuthCallback, ClaudeOAuthError>
OAuthLoopbackServer::callbackFromRequest(std::string_view requestBytes) {
    // Bytes outside printable ASCII can never be part of a valid request target, so the target is judged
    // on the raw bytes; decoding them with replacement characters first would reject the same requests.
    std::string_view requestLine;
    std::size_t start = 0;
    while (start < requestBytes.size()) {
        const std::size_t end = std::min(requestBytes.find("\r\n", start), requestBytes.size());
        if (end > start) {
            requestLine = requestBytes.substr(start, end - start);
            break;
        }
        start = end + 2;
    }
    std::vector<std::string_view> fields;
    std::size_t fieldStart = 0;
    while (fieldStart < requestLine.size()) {
        const std::size_t fieldEnd = std::min(requestLine.find(' ', fieldStart), requestLine.size());
        if (fieldEnd > fieldStart) {
            fields.push_back(requestLine.substr(fieldStart, fieldEnd - fieldStart));
        }
        fieldStart = fieldEnd + 1;
    }
    const auto components = parseTarget(fields.size() > 1 ? fields[1] : std::string_view());
    if (!components || components->path != "/callback" || !components->query) {
        return unexpected(ClaudeOAuthError::invalidCallback);
    }
    auto values = queryValues(*components->query);
    if (!values.code || !values.state) {
        return unexpected(ClaudeOAuthError::invalidCallback);
    }
    return OAuthCallback{std::move(*values.code), std::move(*values.state)};
}

Expected<std::unique_ptr<OAuthLoopbackServer>, ClaudeOAuthError>
OAuthLoopbackServer::open(std::string successPageURL) {
    FileDescriptor listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!listener) {
        return unexpected(ClaudeOAuthError::callbackFailed);
    }
    const int reuse = 1;
    ::setsockopt(listener.get(), SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = 0;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(listener.get(), 1) != 0) {
        return unexpected(ClaudeOAuthError::callbackFailed);
    }
    sockaddr_in bound{};
    socklen_t boundLength = sizeof bound;
    if (::getsockname(listener.get(), reinterpret_cast<sockaddr*>(&bound), &boundLength) != 0) {
        return unexpected(ClaudeOAuthError::callbackFailed);
    }
    int wake[2];
    if (::pipe2(wake, O_CLOEXEC | O_NONBLOCK) != 0) {
        return unexpected(ClaudeOAuthError::callbackFailed);
    }
    return std::unique_ptr<OAuthLoopbackServer>(
        new OAuthLoopbackServer(std::move(listener), FileDescriptor(wake[0]), FileDescriptor(wake[1]),
                                ntohs(bound.sin_port), std::move(successPageURL)));
}

OAuthLoopbackServer::OAuthLoopbackServer(FileDescriptor listener, FileDescriptor wakeReader,
                                         FileDescriptor wakeWriter, std::uint16_t port,
                                         std::string successPageURL)
    : listener(std::move(listener))
    , wakeReader(std::move(wakeReader))
    , wakeWriter(std::move(wakeWriter))
    , port_(port)
    , successPageURL(std::move(successPageURL)) {}

void OAuthLoopbackServer::cancel() noexcept {
    const char byte = 1;
    // A full pipe already holds a wake-up; nothing else can go wrong that a caller could act on.
    [[maybe_unused]] const auto written = ::write(wakeWriter.get(), &byte, 1);
}

Expected<OAuthCallback, ClaudeOAuthError>
OAuthLoopbackServer::waitForCallback(std::chrono::milliseconds timeout) {
    if (!listener) {
        return unexpected(ClaudeOAuthError::callbackFailed);
    }
    auto result = acceptAndRead(timeout);
    listener.reset();
    return result;
}

Expected<OAuthCallback, ClaudeOAuthError>
OAuthLoopbackServer::acceptAndRead(std::chrono::milliseconds timeout) {
    const auto deadline = Deadline::after(timeout);
    FileDescriptor connection;
    while (!connection) {
        if (waitReadable(listener.get(), wakeReader.get(), deadline) != Readiness::ready) {
            return unexpected(ClaudeOAuthError::callbackFailed);
        }
        connection.reset(::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
        // A connection that was reset between poll and accept is not a failure of the wait.
        if (!connection && errno != EAGAIN && errno != EWOULDBLOCK && errno != ECONNABORTED &&
            errno != EINTR) {
            return unexpected(ClaudeOAuthError::callbackFailed);
        }
    }

    // The one read is bounded by what is left of the time-out, so a silent client cannot hold the sign-in.
    if (waitReadable(connection.get(), wakeReader.get(), deadline) != Readiness::ready) {
        return unexpected(ClaudeOAuthError::callbackFailed);
    }
    std::string buffer(maximumRequestBytes, '\0');
    ssize_t count;
    do {
        count = ::recv(connection.get(), buffer.data(), buffer.size(), 0);
    } while (count < 0 && errno == EINTR);
    if (count <= 0) {
        return unexpected(ClaudeOAuthError::invalidCallback);
    }
    buffer.resize(static_cast<std::size_t>(count));

    auto callback = callbackFromRequest(buffer);
    secureWipe(buffer);
    if (!callback) {
        return callback; // closed without an answer
    }
    const std::string response = "HTTP/1.1 302 Found\r\nLocation: " + successPageURL +
                                 "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
    [[maybe_unused]] const auto written =
        ::send(connection.get(), response.data(), response.size(), MSG_NOSIGNAL);
    ::shutdown(connection.get(), SHUT_WR);
    return callback;
}

} // namespace gaugewell
