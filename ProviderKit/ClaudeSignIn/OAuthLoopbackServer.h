#pragma once

#include "Platform/FileDescriptor.h"
#include "ProviderKit/ClaudeSignIn/ClaudeOAuthError.h"
#include "UsageDomain/Expected.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace gaugewell {

struct OAuthCallback {
    std::string code;
    std::string state;

    bool operator==(const OAuthCallback&) const = default;
};

// The one-shot listener behind the OAuth redirect URI: 127.0.0.1, a port the system picks, one
// connection, one read, one fixed answer. Every descriptor is close-on-exec.
class OAuthLoopbackServer {
public:
    static constexpr std::size_t maximumRequestBytes = 16384;

    // Listens on 127.0.0.1 with a system-chosen port; `callbackFailed` when that cannot be done.
    // A successful callback is answered with a redirect to `successPageURL`.
    static Expected<std::unique_ptr<OAuthLoopbackServer>, ClaudeOAuthError> open(std::string successPageURL);

    OAuthLoopbackServer(const OAuthLoopbackServer&) = delete;
    OAuthLoopbackServer& operator=(const OAuthLoopbackServer&) = delete;

    std::uint16_t port() const { return port_; }

    // Blocks for one browser request, at most `timeout` in all (including the read), and closes
    // the listener before returning. `callbackFailed`: no connection in time, a failed poll or accept,
    // a cancel, or a second wait. `invalidCallback`: nothing read, or a request that is not
    // GET /callback with both `code` and `state`; that browser gets no answer at all.
    Expected<OAuthCallback, ClaudeOAuthError> waitForCallback(std::chrono::milliseconds timeout);

    // Ends a running or future wait with `callbackFailed`. Safe from any thread and from a signal handler.
    void cancel() noexcept;

    // How the wait judges the bytes of its one read.
    static Expected<OAuthCallback, ClaudeOAuthError> callbackFromRequest(std::string_view requestBytes);

private:
    OAuthLoopbackServer(FileDescriptor listener, FileDescriptor wakeReader, FileDescriptor wakeWriter,
                        std::uint16_t port, std::string successPageURL);

    Expected<OAuthCallback, ClaudeOAuthError> acceptAndRead(std::chrono::milliseconds timeout);

    FileDescriptor listener;
    FileDescriptor wakeReader;
    FileDescriptor wakeWriter; // written by `cancel`
    std::uint16_t port_;
    std::string successPageURL;
};

} // namespace gaugewell
