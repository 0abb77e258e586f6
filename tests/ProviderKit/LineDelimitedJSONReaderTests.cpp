#include "ProviderKit/Process/LineDelimitedJSONReader.h"

#include <deque>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace gaugewell {
namespace {

using namespace std::chrono_literals;
using Clock = LineDelimitedJSONReader::Clock;
using Error = LineDelimitedJSONReaderError;

// A pipe whose write end the test plays the child with. The reader's clock doubles as the
// script: each reading pass asks for the time once, and may be handed the next chunk then, so
// a test decides exactly which bytes each read can see.
class LineDelimitedJSONReaderTest : public ::testing::Test {
protected:
    void SetUp() override {
        int fds[2];
        ASSERT_EQ(::pipe2(fds, O_CLOEXEC), 0);
        readEnd = fds[0];
        writeEnd = fds[1];
    }
    void TearDown() override {
        ::close(readEnd);
        closeWriter();
    }

    void write(const std::string& bytes) const {
        ASSERT_EQ(::write(writeEnd, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }
    void closeWriter() {
        if (writeEnd >= 0) {
            ::close(writeEnd);
            writeEnd = -1;
        }
    }

    // A reader whose clock stands at `clockNow` and that is handed the next of `chunks` on each pass.
    LineDelimitedJSONReader scriptedReader(std::int64_t limit = 1 << 20) {
        return LineDelimitedJSONReader(readEnd, Deadline::at(start + 10s), limit, [this] {
            if (!chunks.empty()) {
                write(chunks.front());
                chunks.pop_front();
            }
            ++passes;
            return clockNow;
        });
    }

    static std::string text(const Expected<JsonValue, Error>& object) {
        return object ? object->serialized() : "error " + std::to_string(static_cast<int>(object.error()));
    }

    int readEnd = -1;
    int writeEnd = -1;
    const Clock::time_point start = Clock::now();
    Clock::time_point clockNow = start;
    std::deque<std::string> chunks;
    std::size_t passes = 0;
};

TEST_F(LineDelimitedJSONReaderTest, TwoObjectsInOneReadNeedNoSecondRead) {
    chunks = {"{\"id\":1}\n{\"id\":2,\"result\":{}}\n"};
    auto reader = scriptedReader();
    EXPECT_EQ(text(reader.nextObject()), "{\"id\":1}");
    const auto passesBefore = passes;
    // The writer is still open: a second read would wait until the deadline.
    EXPECT_EQ(text(reader.nextObject()), "{\"id\":2,\"result\":{}}");
    EXPECT_EQ(passes, passesBefore + 1);
}

TEST_F(LineDelimitedJSONReaderTest, ObjectSplitOverThreeReadsComesOnceItsLineFeedArrives) {
    chunks = {"{\"method\":\"acc", "ount/login/com", "pleted\"}\n{\"id\""};
    auto reader = scriptedReader();
    EXPECT_EQ(text(reader.nextObject()), "{\"method\":\"account/login/completed\"}");
    EXPECT_EQ(passes, 4u); // three reads, then the line
    chunks.push_back(":7}\n");
    EXPECT_EQ(text(reader.nextObject()), "{\"id\":7}");
}

TEST_F(LineDelimitedJSONReaderTest, EmptyLinesAreSkipped) {
    chunks = {"\n\n{}\n\n", "\n{\"a\":[1]}\n"};
    auto reader = scriptedReader();
    EXPECT_EQ(text(reader.nextObject()), "{}");
    EXPECT_EQ(text(reader.nextObject()), "{\"a\":[1]}");
}

class LineDelimitedJSONReaderMalformed : public LineDelimitedJSONReaderTest,
                                         public ::testing::WithParamInterface<const char*> {};

TEST_P(LineDelimitedJSONReaderMalformed, LineThatIsNotAJsonObjectIsMalformed) {
    chunks = {std::string("{\"id\":1}\n") + GetParam()};
    auto reader = scriptedReader();
    EXPECT_EQ(text(reader.nextObject()), "{\"id\":1}");
    EXPECT_EQ(text(reader.nextObject()), text(unexpected(Error::malformedResponse)));
}

INSTANTIATE_TEST_SUITE_P(Lines, LineDelimitedJSONReaderMalformed,
                         ::testing::Values("[1,2]\n", "42\n", "\"text\"\n", "null\n", "\r\n",
                                           " {\"id\":2}x\n", "{\"id\":\n", "not json\n",
                                           "{\"a\":\"\xff\"}\n"));

struct LimitCase {
    std::size_t totalBytes;
    bool accepted;
};

class LineDelimitedJSONReaderLimit : public LineDelimitedJSONReaderTest,
                                     public ::testing::WithParamInterface<LimitCase> {};

// Counted over the reader's life, line feeds and skipped lines included; equal is allowed.
TEST_P(LineDelimitedJSONReaderLimit, CapsTheBytesReadOverTheReadersLife) {
    const std::string first = "\n{\"id\":1}\n"; // 10 bytes, one of them a skipped line
    const std::string padding(GetParam().totalBytes - first.size() - 9, 'x'); // {"p":"..."}\n around it
    chunks = {first, "{\"p\":\"" + padding + "\"}\n"};
    auto reader = scriptedReader(100);
    EXPECT_EQ(text(reader.nextObject()), "{\"id\":1}");
    const auto second = reader.nextObject();
    if (GetParam().accepted) {
        EXPECT_EQ(text(second), "{\"p\":\"" + padding + "\"}");
    } else {
        EXPECT_EQ(text(second), text(unexpected(Error::outputLimitExceeded)));
    }
}

INSTANTIATE_TEST_SUITE_P(Totals, LineDelimitedJSONReaderLimit,
                         ::testing::Values(LimitCase{99, true}, LimitCase{100, true}, LimitCase{101, false}));

TEST_F(LineDelimitedJSONReaderTest, ByteAfterTheLimitFailsEvenWithoutALine) {
    chunks = {std::string(98, '\n') + "{}\n"};
    auto reader = scriptedReader(100);
    EXPECT_EQ(text(reader.nextObject()), text(unexpected(Error::outputLimitExceeded)));
}

TEST_F(LineDelimitedJSONReaderTest, LastLineWithoutLineFeedIsNeverReturned) {
    chunks = {"{\"id\":1}\n{\"id\":2}"};
    auto reader = scriptedReader();
    EXPECT_EQ(text(reader.nextObject()), "{\"id\":1}");
    closeWriter();
    EXPECT_EQ(text(reader.nextObject()), text(unexpected(Error::streamEnded)));
}

TEST_F(LineDelimitedJSONReaderTest, CompleteLineIsNotReturnedOnceTheDeadlineHasPassed) {
    chunks = {"{\"id\":1}\n{\"id\":2}\n"};
    auto reader = scriptedReader();
    EXPECT_EQ(text(reader.nextObject()), "{\"id\":1}");
    clockNow = start + 10s; // exactly the deadline
    EXPECT_EQ(text(reader.nextObject()), text(unexpected(Error::timedOut)));
}

TEST_F(LineDelimitedJSONReaderTest, DeadlineAlreadyPassedReadsNothing) {
    write("{\"id\":1}\n");
    LineDelimitedJSONReader reader(readEnd, Deadline::after(-1ms), 1024);
    EXPECT_EQ(text(reader.nextObject()), text(unexpected(Error::timedOut)));
    int pending = -1;
    ::ioctl(readEnd, FIONREAD, &pending);
    EXPECT_EQ(pending, 9); // nothing was read
}

TEST_F(LineDelimitedJSONReaderTest, SilentChildTimesOutAtTheDeadline) {
    write("{\"partial\":");
    const auto deadline = Deadline::after(100ms);
    LineDelimitedJSONReader reader(readEnd, deadline, 1024);
    EXPECT_EQ(text(reader.nextObject()), text(unexpected(Error::timedOut)));
    EXPECT_TRUE(deadline.hasPassed());
}

TEST_F(LineDelimitedJSONReaderTest, InvalidDescriptorIsAPollFailure) {
    const int closed = ::dup(readEnd);
    ::close(closed);
    LineDelimitedJSONReader reader(closed, Deadline::after(10s), 1024);
    EXPECT_EQ(text(reader.nextObject()), text(unexpected(Error::pollFailed)));
}

} // namespace
} // namespace gaugewell
