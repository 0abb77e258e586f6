#include "BlockingAppServerOperation.h"

#include "CodexPayloads.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace gaugewell {

namespace {

constexpr std::string_view initializeRequest =
    R"({"id":1,"method":"initialize","params":{"clientInfo":{"name":"gaugewell","version":"0.1.0"},)"
    R"("capabilities":{"experimentalApi":true}}})"
    "\n";
// Sent back to back once the server has answered initialize.
constexpr std::string_view usageRequests = R"({"method":"initialized","params":{}})"
                                           "\n"
                                           R"({"id":2,"method":"account/rateLimits/read","params":null})"
                                           "\n"
                                           R"({"id":3,"method":"account/usage/read","params":null})"
                                           "\n";

constexpr std::size_t readChunkBytes = 8192;
// Far beyond any real deadline, and still representable on the steady clock.
constexpr double longestTimeoutSeconds = 1e9;

using Clock = std::chrono::steady_clock;

// A write to a child that has gone fails with EPIPE (SIGPIPE is ignored process-wide).
bool writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

Clock::time_point deadlineAfter(Clock::time_point start, double timeoutSeconds) {
    if (!(timeoutSeconds > 0)) { // also NaN
        return start;
    }
    const double seconds = std::min(timeoutSeconds, longestTimeoutSeconds);
    return start + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
}

// Milliseconds to wait for output, clamped to what poll takes; never zero, so poll does wait.
int pollMilliseconds(Clock::duration remaining) {
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(remaining).count();
    if (milliseconds < 2) {
        return 1;
    }
    return milliseconds > INT_MAX ? INT_MAX : static_cast<int>(milliseconds);
}

// End of input lets a well-behaved server stop by itself and a closed output stops a flooder;
// SIGTERM, then SIGKILL after the grace, stops the rest. The child is reaped before we return.
void stop(ChildProcess& child) {
    child.closeInput();
    child.closeOutput();
    child.terminate(CodexAppServerTransport::terminationGrace);
}

} // namespace

BlockingAppServerOperation::BlockingAppServerOperation(std::filesystem::path executable,
                                                       Environment environment, double timeoutSeconds,
                                                       std::int64_t outputLimit)
    : executable(std::move(executable))
    , environment(std::move(environment))
    , timeoutSeconds(timeoutSeconds)
    , outputLimit(outputLimit) {}

Expected<CodexAppServerResponse, CodexProviderError> BlockingAppServerOperation::run() {
    auto spawned = ChildProcess::spawn(
        executable.string(), {"app-server", "--stdio"}, environment,
        {ChildProcess::Stream::pipe, ChildProcess::Stream::pipe, ChildProcess::Stream::null});
    if (!spawned) {
        return unexpected(CodexProviderError(CodexProviderError::Kind::launchFailed));
    }
    ChildProcess child = std::move(spawned).value();
    auto result = exchange(child);
    stop(child);
    return result;
}

Expected<CodexAppServerResponse, CodexProviderError>
BlockingAppServerOperation::exchange(ChildProcess& child) {
    if (!writeAll(child.inputDescriptor(), initializeRequest)) {
        return unexpected(CodexProviderError(CodexProviderError::Kind::writeFailed));
    }
    const Clock::time_point deadline = deadlineAfter(Clock::now(), timeoutSeconds);
    if (Clock::now() >= deadline) {
        return unexpected(CodexProviderError(CodexProviderError::Kind::timedOut));
    }

    const int output = child.outputDescriptor();
    std::string pending;
    std::size_t scanned = 0; // bytes of `pending` known to hold no line feed
    std::int64_t received = 0;
    char buffer[readChunkBytes];

    for (Clock::time_point now = Clock::now(); now < deadline; now = Clock::now()) {
        pollfd wait{output, POLLIN, 0};
        const int ready = ::poll(&wait, 1, pollMilliseconds(deadline - now));
        if (ready < 0) {
            if (errno == EINTR) {
                continue;
            }
            return unexpected(CodexProviderError(CodexProviderError::Kind::pollFailed));
        }
        if (ready == 0) {
            continue; // the wait is truncated to whole milliseconds: the loop test decides
        }
        const ssize_t count = ::read(output, buffer, sizeof buffer);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            if (rateLimits) {
                return response();
            }
            return unexpected(CodexProviderError(CodexProviderError::Kind::streamEnded));
        }
        received += count;
        if (received > outputLimit) {
            return unexpected(CodexProviderError(CodexProviderError::Kind::outputLimitExceeded));
        }
        pending.append(buffer, static_cast<std::size_t>(count));

        std::size_t lineStart = 0;
        for (std::size_t feed; (feed = pending.find('\n', scanned)) != std::string::npos;) {
            const auto progress =
                handleLine(child, std::string_view(pending).substr(lineStart, feed - lineStart));
            if (!progress) {
                return unexpected(progress.error());
            }
            if (*progress == Progress::finished) {
                return response();
            }
            lineStart = feed + 1;
            scanned = lineStart;
        }
        pending.erase(0, lineStart);
        scanned = pending.size();
    }
    if (rateLimits) {
        return response();
    }
    return unexpected(CodexProviderError(CodexProviderError::Kind::timedOut));
}

Expected<BlockingAppServerOperation::Progress, CodexProviderError>
BlockingAppServerOperation::handleLine(ChildProcess& child, std::string_view line) {
    if (line.empty()) {
        return Progress::continuing;
    }
    const auto envelope = decodeJson<CodexRPCIdentifier>(line);
    if (!envelope) {
        return unexpected(CodexProviderError(CodexProviderError::Kind::malformedLine));
    }
    if (!envelope->id) {
        return Progress::continuing; // a notification
    }
    const std::int64_t id = *envelope->id;
    if (envelope->error) {
        if (id != 3) {
            return unexpected(CodexProviderError::rpcError(envelope->error->code));
        }
        accountUsage.reset();
        usageAnswered = true;
    } else if (id == 1) {
        if (!initialized) {
            initialized = true;
            if (!writeAll(child.inputDescriptor(), usageRequests)) {
                return unexpected(CodexProviderError(CodexProviderError::Kind::writeFailed));
            }
        }
    } else if (id == 2) {
        rateLimits = std::string(line);
    } else if (id == 3) {
        accountUsage = std::string(line);
        usageAnswered = true;
    }
    return rateLimits && usageAnswered ? Progress::finished : Progress::continuing;
}

CodexAppServerResponse BlockingAppServerOperation::response() {
    return CodexAppServerResponse{std::move(*rateLimits), std::move(accountUsage)};
}

} // namespace gaugewell
