#pragma once

#include "Platform/Deadline.h"
#include "UsageDomain/Expected.h"
#include "UsageDomain/JsonValue.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace gaugewell {

enum class LineDelimitedJSONReaderError {
    timedOut,
    pollFailed,
    streamEnded,
    outputLimitExceeded,
    malformedResponse
};

// Hands out the JSON objects that a child writes one per line, within a fixed deadline and a
// cap on the bytes read over the reader's life, so that a silent, endless or flooding child
// cannot hold its caller. Used by one thread for one child; it neither owns nor closes the
// descriptor. After an error the reader is done with.
class LineDelimitedJSONReader {
public:
    using Clock = std::chrono::steady_clock;
    using Now = std::function<Clock::time_point()>;

    static constexpr std::size_t readSize = 8192;

    LineDelimitedJSONReader(int descriptor, Deadline deadline, std::int64_t outputLimit,
                            Now now = Clock::now);

    // Blocks until the next line (without its line feed), the deadline, end of stream or an
    // error. Empty lines are skipped. A last line without a line feed is never returned.
    Expected<std::string, LineDelimitedJSONReaderError> nextLine();
    // The next line as a JSON object; any other line is `malformedResponse`.
    Expected<JsonValue, LineDelimitedJSONReaderError> nextObject();

private:
    int descriptor;
    Deadline deadline;
    std::int64_t outputLimit;
    Now now;
    std::string pending;
    std::int64_t totalBytes = 0;
};

} // namespace gaugewell
