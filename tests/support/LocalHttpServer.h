#pragma once

#include <cstdint>
#include <functional>
#include <future>
#include <httplib.h>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace gaugewell::testing {

struct HttpAnswer {
    int status = 200;
    std::string body;
    std::string contentType = "application/json";
    std::vector<std::pair<std::string, std::string>> headers = {};
};

// cpp-httplib on 127.0.0.1 and a port the system picks, one request per connection. Answers come from
// per-path handlers (any method); other paths get 404. Every request is recorded.
class LocalHttpServer {
public:
    using Handler = std::function<HttpAnswer(const httplib::Request&)>;

    LocalHttpServer();
    ~LocalHttpServer();

    std::uint16_t port() const { return port_; }
    std::string baseURL() const { return "http://127.0.0.1:" + std::to_string(port_); }

    void route(const std::string& path, Handler handler);
    void route(const std::string& path, HttpAnswer answer);
    // All requests so far, or those for one path.
    std::vector<httplib::Request> requests(std::optional<std::string> path = std::nullopt) const;
    // Closes the listener and joins the server's threads: later connections are refused.
    void stop();

private:
    httplib::Server server;
    std::uint16_t port_ = 0;
    std::promise<void> running;
    std::thread listenThread;

    mutable std::mutex mutex;
    std::map<std::string, Handler> handlers;
    std::vector<httplib::Request> recorded;
};

} // namespace gaugewell::testing
