#include "ProviderKit/Process/LineDelimitedJSONReader.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <poll.h>
#include <unistd.h>

namespace gaugewell {

LineDelimitedJSONReader::LineDelimitedJSONReader(int descriptor, Deadline deadline, std::int64_t outputLimit,
                                                 Now now)
    : descriptor(descriptor)
    , deadline(deadline)
    , outputLimit(outputLimit)
    , now(std::move(now)) {}

Expected<JsonValue, LineDelimitedJSONReaderError> LineDelimitedJSONReader::nextObject() {
    auto line = nextLine();
    if (!line) {
        return unexpected(line.error());
    }
    // No trimming: a line of "\r" alone, or an object followed by "\r", is not an object line.
    auto parsed = parseJson(*line);
    if (!parsed || parsed->type() != JsonValue::Type::object) {
        return unexpected(LineDelimitedJSONReaderError::malformedResponse);
    }
    return std::move(parsed).value();
}

Expected<std::string, LineDelimitedJSONReaderError> LineDelimitedJSONReader::nextLine() {
    for (;;) {
        // First on every pass: once the deadline has passed, not even a line already read is returned.
        const auto current = now();
        if (current >= deadline.timePoint()) {
            return unexpected(LineDelimitedJSONReaderError::timedOut);
        }

        if (const auto lineFeed = pending.find('\n'); lineFeed != std::string::npos) {
            std::string line = pending.substr(0, lineFeed);
            pending.erase(0, lineFeed + 1);
            if (line.empty()) {
                continue;
            }
            return line;
        }

        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline.timePoint() - current).count();
        const int timeout = static_cast<int>(std::clamp<decltype(left)>(left, 1, INT_MAX));
        pollfd waiting{descriptor, POLLIN, 0};
        const int ready = ::poll(&waiting, 1, timeout);
        if (ready < 0) {
            if (errno == EINTR) {
                continue;
            }
            return unexpected(LineDelimitedJSONReaderError::pollFailed);
        }
        if (ready == 0) {
            return unexpected(LineDelimitedJSONReaderError::timedOut);
        }
        if (waiting.revents & POLLNVAL) {
            return unexpected(LineDelimitedJSONReaderError::pollFailed);
        }

        char chunk[readSize];
        const ssize_t got = ::read(descriptor, chunk, sizeof chunk);
        if (got < 0 && (errno == EINTR || errno == EAGAIN)) {
            continue; // interrupted, or a spurious wake-up on a non-blocking descriptor
        }
        if (got <= 0) {
            return unexpected(LineDelimitedJSONReaderError::streamEnded);
        }
        totalBytes += got;
        if (totalBytes > outputLimit) {
            return unexpected(LineDelimitedJSONReaderError::outputLimitExceeded);
        }
        pending.append(chunk, static_cast<std::size_t>(got));
    }
}

} // namespace gaugewell
