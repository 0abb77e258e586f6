#include "Platform/SafeFileReader.h"
#include "TemporaryDirectory.h"

#include <grp.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace gaugewell {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using std::chrono::steady_clock;
using testing::TemporaryDirectory;
using testing::writeFile;

const auto noDelay = std::chrono::nanoseconds::zero();

class SafeFileReaderTest : public ::testing::Test {
protected:
    // Long enough that an unwanted retry would show in the elapsed time.
    static constexpr auto longDelay = 30s;

    TemporaryDirectory directory;
    SafeFileReader reader;
};

TEST_F(SafeFileReaderTest, AcceptsUpToTheLimitInclusive) {
    const struct {
        std::int64_t limit;
        std::size_t size;
        bool accepted;
    } cases[] = {{10, 10, true}, {10, 11, false}, {-1, 0, false}, {200000, 200000, true}};
    for (const auto& [limit, size, accepted] : cases) {
        SCOPED_TRACE(std::to_string(size) + " bytes, limit " + std::to_string(limit));
        std::string contents(size, 'x');
        for (std::size_t index = 0; index < contents.size(); ++index) {
            contents[index] = static_cast<char>(index * 7);
        }
        writeFile(directory / "file", contents);
        const auto result = reader.read(directory / "file", limit, noDelay);
        if (accepted) {
            ASSERT_TRUE(result.hasValue());
            EXPECT_EQ(*result, contents);
        } else {
            ASSERT_FALSE(result.hasValue());
            EXPECT_EQ(result.error(), SafeFileReaderError::tooLarge);
        }
    }
}

// Pseudo files report a size of 0; the limit must hold on what is actually read.
TEST_F(SafeFileReaderTest, LimitHoldsForFilesThatMisreportTheirSize) {
    const auto result = reader.read("/proc/self/status", 16, noDelay);
    ASSERT_FALSE(result.hasValue());
    EXPECT_EQ(result.error(), SafeFileReaderError::tooLarge);
}

TEST_F(SafeFileReaderTest, MissingAndTooLargeFailAtOnceWithoutRetry) {
    writeFile(directory / "big", std::string(100, 'x'));
    const auto started = steady_clock::now();
    for (const auto& [path, limit, expected] : std::vector<std::tuple<fs::path, int, SafeFileReaderError>>{
             {directory / "absent", 1024, SafeFileReaderError::missing},
             {directory / "big", 99, SafeFileReaderError::tooLarge}}) {
        const auto result = reader.read(path, limit, longDelay);
        ASSERT_FALSE(result.hasValue()) << path;
        EXPECT_EQ(result.error(), expected) << path;
    }
    EXPECT_LT(steady_clock::now() - started, longDelay / 2);
}

// Opening a FIFO for reading would wait for a writer; the reader must not.
TEST_F(SafeFileReaderTest, FolderAndFifoAreUnreadableAfterOneRetryWithoutBlocking) {
    ASSERT_EQ(::mkfifo((directory / "fifo").c_str(), 0600), 0);
    const auto delay = 50ms;
    for (const auto& path : {directory.path(), directory / "fifo"}) {
        const auto started = steady_clock::now();
        const auto result = reader.read(path, 1 << 20, delay);
        const auto elapsed = steady_clock::now() - started;
        ASSERT_FALSE(result.hasValue()) << path;
        EXPECT_EQ(result.error(), SafeFileReaderError::unreadable) << path;
        EXPECT_GE(elapsed, delay);
        EXPECT_LT(elapsed, longDelay);
    }
}

// Root reads anything, so the read runs in a child that has become an unprivileged user.
SafeFileReaderError readAsUnprivilegedUser(const fs::path& path) {
    if (::geteuid() != 0) {
        const auto result = SafeFileReader().read(path, 1024, 30s);
        return result ? static_cast<SafeFileReaderError>(-1) : result.error();
    }
    const pid_t pid = ::fork();
    if (pid == 0) {
        constexpr uid_t nobody = 65534;
        if (::setgroups(0, nullptr) != 0 || ::setgid(nobody) != 0 || ::setuid(nobody) != 0) {
            ::_exit(100);
        }
        const auto result = SafeFileReader().read(path, 1024, 30s);
        ::_exit(result ? 101 : static_cast<int>(result.error()));
    }
    int status = 0;
    ::waitpid(pid, &status, 0);
    return static_cast<SafeFileReaderError>(WIFEXITED(status) ? WEXITSTATUS(status) : 102);
}

TEST_F(SafeFileReaderTest, FileWeMayNotReadIsPermissionDenied) {
    fs::permissions(directory.path(), fs::perms(0755));
    writeFile(directory / "secret", "token", fs::perms(0200));
    const auto started = steady_clock::now();
    EXPECT_EQ(readAsUnprivilegedUser(directory / "secret"), SafeFileReaderError::permissionDenied);
    EXPECT_LT(steady_clock::now() - started, 15s); // not retried
}

} // namespace
} // namespace gaugewell
