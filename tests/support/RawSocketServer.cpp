#include "RawSocketServer.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>

namespace gaugewell::testing {

RawSocketServer::RawSocketServer(Silent)
    : listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    int stopPipe[2];
    if (::bind(listener.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(listener.get(), 16) != 0 ||
        ::getsockname(listener.get(), reinterpret_cast<sockaddr*>(&address), &length) != 0 ||
        ::pipe2(stopPipe, O_CLOEXEC) != 0) {
        throw std::runtime_error("RawSocketServer: cannot listen on 127.0.0.1");
    }
    port_ = ntohs(address.sin_port);
    stopReader.reset(stopPipe[0]);
    stopWriter.reset(stopPipe[1]);
}

RawSocketServer::RawSocketServer(std::string reply)
    : RawSocketServer(Silent()) {
    thread = std::thread([this, reply = std::move(reply)] {
        for (;;) {
            pollfd fds[2] = {{listener.get(), POLLIN, 0}, {stopReader.get(), POLLIN, 0}};
            if (::poll(fds, 2, -1) > 0 && fds[1].revents != 0) {
                return;
            }
            const FileDescriptor connection(::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
            if (!connection) {
                continue;
            }
            ++connections;
            char request[65536];
            pollfd readable{connection.get(), POLLIN, 0};
            if (::poll(&readable, 1, 5000) > 0 && ::recv(connection.get(), request, sizeof request, 0) >= 0) {
                ::send(connection.get(), reply.data(), reply.size(), MSG_NOSIGNAL);
            }
            ::shutdown(connection.get(), SHUT_WR);
        }
    });
}

RawSocketServer::~RawSocketServer() {
    if (thread.joinable()) {
        [[maybe_unused]] const auto written = ::write(stopWriter.get(), "x", 1);
        thread.join();
    }
}

} // namespace gaugewell::testing
