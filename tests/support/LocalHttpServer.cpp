#include "LocalHttpServer.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace gaugewell::testing {

namespace {

constexpr std::size_t maximumRequestBytes = 1 << 20;
constexpr int readTimeoutMilliseconds = 5000;

std::string lowercased(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return result;
}

std::string percentDecoded(std::string_view text) {
    std::string result;
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (text[index] == '%' && index + 2 < text.size()) {
            result.push_back(
                static_cast<char>(std::stoi(std::string(text.substr(index + 1, 2)), nullptr, 16)));
            index += 2;
        } else {
            result.push_back(text[index]);
        }
    }
    return result;
}

void writeAll(int descriptor, std::string_view data) {
    while (!data.empty()) {
        const ssize_t written = ::send(descriptor, data.data(), data.size(), MSG_NOSIGNAL);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return;
        }
        data.remove_prefix(static_cast<std::size_t>(written));
    }
}

std::string reasonPhrase(int status) {
    switch (status) {
    case 200:
        return "OK";
    case 201:
        return "Created";
    case 302:
        return "Found";
    case 400:
        return "Bad Request";
    case 401:
        return "Unauthorized";
    case 403:
        return "Forbidden";
    case 404:
        return "Not Found";
    case 429:
        return "Too Many Requests";
    case 500:
        return "Internal Server Error";
    default:
        return "Status";
    }
}

} // namespace

std::optional<std::string> RecordedHttpRequest::header(std::string_view name) const {
    const auto wanted = lowercased(name);
    for (const auto& [key, value] : headers) {
        if (lowercased(key) == wanted) {
            return value;
        }
    }
    return std::nullopt;
}

std::optional<std::string> RecordedHttpRequest::queryItem(std::string_view name) const {
    std::size_t start = 0;
    while (start <= query.size()) {
        const std::size_t end = std::min(query.find('&', start), query.size());
        const std::string_view item = std::string_view(query).substr(start, end - start);
        const std::size_t equals = item.find('=');
        if (percentDecoded(item.substr(0, equals)) == name) {
            return equals == std::string_view::npos ? std::string() : percentDecoded(item.substr(equals + 1));
        }
        start = end + 1;
    }
    return std::nullopt;
}

ScriptedHttpResponse ScriptedHttpResponse::json(int status, std::string body) {
    return ScriptedHttpResponse{
        status, {{"Content-Type", "application/json"}}, std::move(body), Behavior::respond};
}

ScriptedHttpResponse ScriptedHttpResponse::redirect(std::string location) {
    return ScriptedHttpResponse{302, {{"Location", std::move(location)}}, {}, Behavior::respond};
}

ScriptedHttpResponse ScriptedHttpResponse::withBehavior(Behavior behavior, std::string raw) {
    return ScriptedHttpResponse{0, {}, std::move(raw), behavior};
}

LocalHttpServer::LocalHttpServer() {
    listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (listener < 0 || ::pipe2(stopPipe, O_CLOEXEC) != 0) {
        throw std::runtime_error("LocalHttpServer: cannot create socket");
    }
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (::bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(listener, 16) != 0 ||
        ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        throw std::runtime_error("LocalHttpServer: cannot listen");
    }
    port_ = ntohs(address.sin_port);
    acceptThread = std::thread([this] { acceptLoop(); });
}

LocalHttpServer::~LocalHttpServer() {
    stop();
}

std::string LocalHttpServer::baseURL() const {
    return "http://127.0.0.1:" + std::to_string(port_);
}

void LocalHttpServer::route(const std::string& path, Handler handler) {
    std::lock_guard lock(mutex);
    handlers[path] = std::move(handler);
}

void LocalHttpServer::route(const std::string& path, ScriptedHttpResponse response) {
    route(path, [response](const RecordedHttpRequest&) { return response; });
}

std::vector<RecordedHttpRequest> LocalHttpServer::requests() const {
    std::lock_guard lock(mutex);
    return recorded;
}

std::vector<RecordedHttpRequest> LocalHttpServer::requests(const std::string& path) const {
    std::lock_guard lock(mutex);
    std::vector<RecordedHttpRequest> matching;
    std::copy_if(recorded.begin(), recorded.end(), std::back_inserter(matching),
                 [&](const auto& request) { return request.path == path; });
    return matching;
}

bool LocalHttpServer::waitForRequests(const std::string& path, std::size_t count,
                                      std::chrono::milliseconds timeout) const {
    std::unique_lock lock(mutex);
    return requestArrived.wait_for(lock, timeout, [&] {
        return static_cast<std::size_t>(
                   std::count_if(recorded.begin(), recorded.end(),
                                 [&](const auto& request) { return request.path == path; })) >= count;
    });
}

void LocalHttpServer::stop() {
    {
        std::lock_guard lock(mutex);
        if (stopped) {
            return;
        }
        stopped = true;
    }
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(stopPipe[1], &byte, 1);
    acceptThread.join();
    std::vector<std::thread> threads;
    {
        std::lock_guard lock(mutex);
        threads.swap(connectionThreads);
    }
    for (auto& thread : threads) {
        thread.join();
    }
    ::close(listener);
    ::close(stopPipe[0]);
    ::close(stopPipe[1]);
}

void LocalHttpServer::acceptLoop() {
    for (;;) {
        pollfd fds[2] = {{listener, POLLIN, 0}, {stopPipe[0], POLLIN, 0}};
        if (::poll(fds, 2, -1) < 0) {
            if (errno == EINTR) {
                continue;
            }
            return;
        }
        if (fds[1].revents != 0) {
            return;
        }
        const int connection = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection < 0) {
            continue;
        }
        std::lock_guard lock(mutex);
        connectionThreads.emplace_back([this, connection] { serve(connection); });
    }
}

std::optional<RecordedHttpRequest> LocalHttpServer::readRequest(int connection) {
    std::string data;
    std::size_t headerEnd = std::string::npos;
    std::size_t contentLength = 0;
    char buffer[8192];
    for (;;) {
        if (headerEnd != std::string::npos && data.size() >= headerEnd + 4 + contentLength) {
            break;
        }
        pollfd fds[2] = {{connection, POLLIN, 0}, {stopPipe[0], POLLIN, 0}};
        const int ready = ::poll(fds, 2, readTimeoutMilliseconds);
        if (ready <= 0 || fds[1].revents != 0) {
            return std::nullopt;
        }
        const ssize_t count = ::recv(connection, buffer, sizeof buffer, 0);
        if (count <= 0) {
            return std::nullopt;
        }
        data.append(buffer, static_cast<std::size_t>(count));
        if (data.size() > maximumRequestBytes) {
            return std::nullopt;
        }
        if (headerEnd == std::string::npos) {
            headerEnd = data.find("\r\n\r\n");
            if (headerEnd != std::string::npos) {
                const auto headerText = lowercased(std::string_view(data).substr(0, headerEnd));
                const auto position = headerText.find("\r\ncontent-length:");
                if (position != std::string::npos) {
                    contentLength = std::stoul(headerText.substr(position + 17));
                }
            }
        }
    }
    RecordedHttpRequest request;
    std::string_view head = std::string_view(data).substr(0, headerEnd);
    const std::size_t lineEnd = std::min(head.find("\r\n"), head.size());
    const std::string_view requestLine = head.substr(0, lineEnd);
    const std::size_t firstSpace = requestLine.find(' ');
    const std::size_t secondSpace = requestLine.find(' ', firstSpace + 1);
    if (firstSpace == std::string_view::npos || secondSpace == std::string_view::npos) {
        return std::nullopt;
    }
    request.method = std::string(requestLine.substr(0, firstSpace));
    request.target = std::string(requestLine.substr(firstSpace + 1, secondSpace - firstSpace - 1));
    const std::size_t question = request.target.find('?');
    request.path = request.target.substr(0, question);
    request.query = question == std::string::npos ? std::string() : request.target.substr(question + 1);
    std::size_t start = lineEnd + 2;
    while (start < head.size()) {
        const std::size_t end = std::min(head.find("\r\n", start), head.size());
        const std::string_view line = head.substr(start, end - start);
        const std::size_t colon = line.find(':');
        if (colon != std::string_view::npos) {
            std::string_view value = line.substr(colon + 1);
            while (!value.empty() && value.front() == ' ') {
                value.remove_prefix(1);
            }
            request.headers.emplace_back(std::string(line.substr(0, colon)), std::string(value));
        }
        start = end + 2;
    }
    request.body = data.substr(headerEnd + 4, contentLength);
    return request;
}

void LocalHttpServer::serve(int connection) {
    auto request = readRequest(connection);
    if (!request) {
        ::close(connection);
        return;
    }
    Handler handler;
    {
        std::lock_guard lock(mutex);
        recorded.push_back(*request);
        const auto found = handlers.find(request->path);
        if (found != handlers.end()) {
            handler = found->second;
        }
    }
    requestArrived.notify_all();
    const ScriptedHttpResponse response =
        handler ? handler(*request) : ScriptedHttpResponse::json(404, R"({"error":"not_found"})");
    switch (response.behavior) {
    case ScriptedHttpResponse::Behavior::respond: {
        std::string text =
            "HTTP/1.1 " + std::to_string(response.status) + " " + reasonPhrase(response.status) + "\r\n";
        for (const auto& [name, value] : response.headers) {
            text += name + ": " + value + "\r\n";
        }
        text += "Content-Length: " + std::to_string(response.body.size()) + "\r\nConnection: close\r\n\r\n";
        text += response.body;
        writeAll(connection, text);
        break;
    }
    case ScriptedHttpResponse::Behavior::raw:
        writeAll(connection, response.body);
        break;
    case ScriptedHttpResponse::Behavior::closeWithoutAnswer:
        break;
    case ScriptedHttpResponse::Behavior::neverAnswer: {
        pollfd fds[1] = {{stopPipe[0], POLLIN, 0}};
        while (::poll(fds, 1, -1) < 0 && errno == EINTR) {
        }
        break;
    }
    }
    ::shutdown(connection, SHUT_WR);
    ::close(connection);
}

} // namespace gaugewell::testing
