#pragma once

// Clients of the widget feed for tests: raw loopback sockets driven from a worker thread while the
// main thread keeps the server's event loop running, and bounded waits on that loop.

#include "QtTestSupport.h"

#include <QEventLoop>
#include <QMetaObject>
#include <QTcpServer>
#include <QTimer>
#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <netinet/in.h>
#include <optional>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace gaugewell::testing {

using namespace std::chrono_literals;

// A port that was free a moment ago.
inline std::uint16_t unusedLoopbackPort() {
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    return probe.serverPort();
}

// Runs `work` on a thread of its own while the main loop serves. `work` must end by itself within
// its own deadline, shorter than `limit`.
template <class Work> auto whileServing(Work work, std::chrono::milliseconds limit = 30s) {
    using Result = decltype(work());
    std::optional<Result> result;
    bool finished = false;
    QEventLoop loop;
    std::thread worker([&] {
        Result value = work();
        QMetaObject::invokeMethod(
            &loop,
            [&, value = std::move(value)]() mutable {
                result = std::move(value);
                finished = true;
                loop.quit();
            },
            Qt::QueuedConnection);
    });
    QTimer::singleShot(limit, &loop, &QEventLoop::quit);
    if (!finished) {
        loop.exec();
    }
    worker.join();
    QCoreApplication::processEvents(); // delivers a result that raced the limit
    return result;
}

inline int connectToLoopback(std::uint16_t port, bool blocking = true) {
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | (blocking ? 0 : SOCK_NONBLOCK), 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 && errno != EINPROGRESS) {
        ::close(fd);
        return -1;
    }
    return fd;
}

struct RawExchange {
    bool connected = false;
    std::string received; // every byte until the server closed
    bool closedByServer = false;
};

// Connects, sends `request` in one write (nothing when empty), optionally shuts down its sending side,
// then reads until the server closes the connection or the deadline passes.
inline RawExchange exchange(std::uint16_t port, const std::string& request,
                            std::chrono::milliseconds deadline = 10s, bool halfClose = false) {
    RawExchange result;
    const int fd = connectToLoopback(port);
    if (fd < 0) {
        return result;
    }
    result.connected = true;
    if (!request.empty()) {
        (void)::send(fd, request.data(), request.size(), MSG_NOSIGNAL);
    }
    if (halfClose) {
        ::shutdown(fd, SHUT_WR);
    }
    const auto end = std::chrono::steady_clock::now() + deadline;
    char buffer[4096];
    for (;;) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        pollfd entry{fd, POLLIN, 0};
        if (left.count() <= 0 || ::poll(&entry, 1, static_cast<int>(left.count())) <= 0) {
            break;
        }
        const ssize_t count = ::recv(fd, buffer, sizeof buffer, 0);
        if (count <= 0) {
            result.closedByServer = count == 0 || errno == ECONNRESET;
            break;
        }
        result.received.append(buffer, static_cast<std::size_t>(count));
    }
    ::close(fd);
    return result;
}

} // namespace gaugewell::testing
