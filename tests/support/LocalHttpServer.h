#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace gaugewell::testing {

struct RecordedHttpRequest {
    std::string method;
    std::string target; // as on the request line
    std::string path;   // target up to "?"
    std::string query;  // after "?", still percent-encoded
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;

    // Case-insensitive name lookup; the first header of that name.
    std::optional<std::string> header(std::string_view name) const;
    // Percent-decoded value of the first query item of that name.
    std::optional<std::string> queryItem(std::string_view name) const;
};

struct ScriptedHttpResponse {
    enum class Behavior {
        respond, // status, headers, body
        raw,     // `body` is written as it is, nothing else
        closeWithoutAnswer,
        neverAnswer, // the connection stays open and silent until the server stops
    };

    int status = 200;
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;
    Behavior behavior = Behavior::respond;

    static ScriptedHttpResponse json(int status, std::string body);
    static ScriptedHttpResponse redirect(std::string location);
    static ScriptedHttpResponse withBehavior(Behavior behavior, std::string raw = {});
};

// A small HTTP/1.1 server for tests on 127.0.0.1 and a port the system picks. Each connection gets its
// own thread and one request-response exchange ("Connection: close"). Answers come from per-path scripts;
// unknown paths get 404. Every request is recorded. Reads are bounded in size and time.
class LocalHttpServer {
public:
    using Handler = std::function<ScriptedHttpResponse(const RecordedHttpRequest&)>;

    LocalHttpServer();
    ~LocalHttpServer();
    LocalHttpServer(const LocalHttpServer&) = delete;
    LocalHttpServer& operator=(const LocalHttpServer&) = delete;

    std::uint16_t port() const { return port_; }
    std::string baseURL() const; // "http://127.0.0.1:<port>"

    void route(const std::string& path, Handler handler);
    void route(const std::string& path, ScriptedHttpResponse response);

    std::vector<RecordedHttpRequest> requests() const;
    std::vector<RecordedHttpRequest> requests(const std::string& path) const;
    // True when at least `count` requests for `path` arrived within the time-out.
    bool waitForRequests(const std::string& path, std::size_t count, std::chrono::milliseconds timeout) const;

    // Closes the listener and every connection, and joins all threads. Called by the destructor.
    void stop();

private:
    void acceptLoop();
    void serve(int connection);
    std::optional<RecordedHttpRequest> readRequest(int connection);

    int listener = -1;
    int stopPipe[2] = {-1, -1};
    std::uint16_t port_ = 0;
    std::thread acceptThread;

    mutable std::mutex mutex;
    mutable std::condition_variable requestArrived;
    std::map<std::string, Handler> handlers;
    std::vector<RecordedHttpRequest> recorded;
    std::vector<std::thread> connectionThreads;
    bool stopped = false;
};

} // namespace gaugewell::testing
