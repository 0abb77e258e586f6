#include "ProviderKit/Process/PosixCommandRunner.h"

#include "ProviderKit/Process/ChildProcess.h"

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <unistd.h>

namespace gaugewell {

namespace {

enum class DrainOutcome { finished, outputLimitExceeded, timedOut };

// Reads both pipes to end of file once the child has exited, never more than `limit` + 1 bytes
// in all: a descendant that keeps writing after the child is gone cannot make us buffer without
// bound. Both pipes are read together, and only until the deadline, so a descendant that holds
// one of them open cannot hold us.
DrainOutcome drain(ChildProcess& child, std::string& output, std::string& error, std::int64_t limit,
                   Deadline deadline) {
    if (limit < 0) { // even no output at all is more than that
        return DrainOutcome::outputLimitExceeded;
    }
    std::int64_t total = 0;
    struct Stream {
        int descriptor;
        std::string* buffer;
    };
    Stream streams[2] = {{child.outputDescriptor(), &output}, {child.errorDescriptor(), &error}};
    char chunk[16384];
    for (;;) {
        pollfd fds[2];
        nfds_t count = 0;
        Stream* polled[2];
        for (auto& stream : streams) {
            if (stream.descriptor >= 0) {
                fds[count] = {stream.descriptor, POLLIN, 0};
                polled[count++] = &stream;
            }
        }
        if (count == 0) {
            return DrainOutcome::finished;
        }
        const int ready = ::poll(fds, count, deadline.pollMilliseconds());
        if (ready < 0) {
            if (errno == EINTR) {
                continue;
            }
            // Only resource exhaustion gets here; the output cannot be collected in time.
            return DrainOutcome::timedOut;
        }
        if (ready == 0) {
            return DrainOutcome::timedOut;
        }
        for (nfds_t index = 0; index < count; ++index) {
            if (fds[index].revents == 0) {
                continue;
            }
            auto& stream = *polled[index];
            const auto budget = static_cast<std::uint64_t>(limit - total) + 1;
            const auto request = static_cast<std::size_t>(std::min<std::uint64_t>(sizeof chunk, budget));
            const ssize_t got = ::read(stream.descriptor, chunk, request);
            if (got > 0) {
                stream.buffer->append(chunk, static_cast<std::size_t>(got));
                total += got;
                if (total > limit) {
                    return DrainOutcome::outputLimitExceeded;
                }
            } else if (got == 0 || (errno != EINTR && errno != EAGAIN)) {
                stream.descriptor = -1; // end of file, or a pipe that can no longer be read
            }
        }
    }
}

} // namespace

Expected<CommandOutput, ProcessSupportError>
PosixCommandRunner::run(const std::filesystem::path& executable, const std::vector<std::string>& arguments,
                        const Environment& environment, std::chrono::milliseconds timeout,
                        std::int64_t outputLimit) const {
    // Standard input is the null device, not ours: a child must never read the terminal or
    // whatever our own input happens to be.
    auto spawned = ChildProcess::spawn(
        executable.string(), arguments, environment,
        {ChildProcess::Stream::null, ChildProcess::Stream::pipe, ChildProcess::Stream::pipe});
    if (!spawned) {
        return unexpected(ProcessSupportError::launchFailed);
    }
    ChildProcess child = std::move(spawned).value();
    const auto deadline = Deadline::after(timeout);

    // Nothing drains the pipes while the child runs: a child that fills one blocks on it and
    // ends up timed out, so a flood costs us no memory.
    if (!child.waitForExit(deadline)) {
        child.terminate(terminationGrace);
        return unexpected(ProcessSupportError::timedOut);
    }

    CommandOutput output;
    switch (drain(child, output.standardOutput, output.standardError, outputLimit, deadline)) {
    case DrainOutcome::finished:
        break;
    case DrainOutcome::outputLimitExceeded:
        return unexpected(ProcessSupportError::outputLimitExceeded);
    case DrainOutcome::timedOut:
        return unexpected(ProcessSupportError::timedOut);
    }
    // Whatever the child left running in its group goes now.
    output.status = child.terminate(terminationGrace);
    return output;
}

} // namespace gaugewell
