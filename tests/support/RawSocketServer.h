#pragma once

#include "Platform/FileDescriptor.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>

namespace gaugewell::testing {

// A TCP listener on 127.0.0.1 for what no real HTTP server does: answering with bytes that are not
// HTTP, hanging up without an answer, or never answering at all.
class RawSocketServer {
public:
    struct Silent {};

    // Each connection gets one read of its request (at most 5 s), then exactly `reply` (nothing when
    // empty), and is closed.
    explicit RawSocketServer(std::string reply);
    // Listens but never accepts: the kernel completes each handshake and nobody ever answers.
    explicit RawSocketServer(Silent);
    ~RawSocketServer();

    std::uint16_t port() const { return port_; }
    std::string baseURL() const { return "http://127.0.0.1:" + std::to_string(port_); }
    int connectionCount() const { return connections; }

private:
    FileDescriptor listener;
    FileDescriptor stopReader;
    FileDescriptor stopWriter;
    std::uint16_t port_ = 0;
    std::atomic<int> connections = 0;
    std::thread thread;
};

} // namespace gaugewell::testing
