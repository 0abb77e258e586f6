#include "LocalHttpServer.h"

#include <algorithm>
#include <csignal>
#include <future>
#include <stdexcept>

namespace gaugewell::testing {

LocalHttpServer::LocalHttpServer() {
    // httplib writes without MSG_NOSIGNAL: a client that hangs up early must not end the test program.
    std::signal(SIGPIPE, SIG_IGN);
    server.set_keep_alive_max_count(1);
    // A catch-all route per method: httplib's pre-routing hook would run before the body is read.
    const auto dispatch = [this](const httplib::Request& request, httplib::Response& response) {
        Handler handler = [](const httplib::Request&) { return HttpAnswer{404, R"({"error":"not_found"})"}; };
        {
            std::lock_guard lock(mutex);
            recorded.push_back(request);
            if (const auto found = handlers.find(request.path); found != handlers.end()) {
                handler = found->second;
            }
        }
        const HttpAnswer answer = handler(request);
        response.status = answer.status;
        for (const auto& [name, value] : answer.headers) {
            response.set_header(name, value);
        }
        if (!answer.body.empty()) {
            response.set_content(answer.body, answer.contentType);
        }
    };
    server.Get(".*", dispatch).Post(".*", dispatch).Put(".*", dispatch).Delete(".*", dispatch);
    const int port = server.bind_to_any_port("127.0.0.1");
    if (port <= 0) {
        throw std::runtime_error("LocalHttpServer: cannot listen on 127.0.0.1");
    }
    port_ = static_cast<std::uint16_t>(port);
    // httplib's stop() does nothing until its accept loop runs; the loop makes its task queue first.
    server.new_task_queue = [this] {
        running.set_value();
        return new httplib::ThreadPool(CPPHTTPLIB_THREAD_POOL_COUNT);
    };
    listenThread = std::thread([this] { server.listen_after_bind(); });
    running.get_future().wait();
}

LocalHttpServer::~LocalHttpServer() {
    stop();
}

void LocalHttpServer::route(const std::string& path, Handler handler) {
    std::lock_guard lock(mutex);
    handlers[path] = std::move(handler);
}

void LocalHttpServer::route(const std::string& path, HttpAnswer answer) {
    route(path, [answer](const httplib::Request&) { return answer; });
}

std::vector<httplib::Request> LocalHttpServer::requests(std::optional<std::string> path) const {
    std::lock_guard lock(mutex);
    std::vector<httplib::Request> matching;
    std::copy_if(recorded.begin(), recorded.end(), std::back_inserter(matching),
                 [&](const auto& request) { return !path || request.path == *path; });
    return matching;
}

void LocalHttpServer::stop() {
    server.stop();
    if (listenThread.joinable()) {
        listenThread.join();
    }
}

} // namespace gaugewell::testing
