#include "GaugewellUI/Model/SafeFileReader.h"
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

struct SizeCase {
    std::int64_t limit;
    std::size_t size;
    bool accepted;
};

class SafeFileReaderSize : public ::testing::TestWithParam<SizeCase> {
protected:
    TemporaryDirectory directory;
};

TEST_P(SafeFileReaderSize, AcceptsUpToTheLimitInclusive) {
    const auto& param = GetParam();
    std::string contents(param.size, 'x');
    for (std::size_t index = 0; index < contents.size(); ++index) {
        contents[index] = static_cast<char>(index * 7);
    }
    writeFile(directory / "file", contents);
    const auto result = SafeFileReader().read(directory / "file", param.limit, noDelay);
    if (param.accepted) {
        ASSERT_TRUE(result.hasValue());
        EXPECT_EQ(*result, contents);
    } else {
        ASSERT_FALSE(result.hasValue());
        EXPECT_EQ(result.error(), SafeFileReaderError::tooLarge);
    }
}

INSTANTIATE_TEST_SUITE_P(Sizes, SafeFileReaderSize,
                         ::testing::Values(SizeCase{10, 10, true}, SizeCase{10, 11, false},
                                           SizeCase{0, 0, true}, SizeCase{0, 1, false},
                                           SizeCase{-1, 0, false}, SizeCase{200000, 200000, true},
                                           SizeCase{199999, 200000, false}));

class SafeFileReaderTest : public ::testing::Test {
protected:
    // Long enough that an unwanted retry would show in the elapsed time.
    static constexpr auto longDelay = 30s;

    TemporaryDirectory directory;
    SafeFileReader reader;
};

// Pseudo files report a size of 0; the limit must hold on what is actually read.
TEST_F(SafeFileReaderTest, LimitHoldsForFilesThatMisreportTheirSize) {
    const auto small = reader.read("/proc/self/status", 16, noDelay);
    ASSERT_FALSE(small.hasValue());
    EXPECT_EQ(small.error(), SafeFileReaderError::tooLarge);

    const auto whole = reader.read("/proc/self/status", 1 << 20, noDelay);
    ASSERT_TRUE(whole.hasValue());
    EXPECT_NE(whole->find("Pid:"), std::string::npos);
}

TEST_F(SafeFileReaderTest, MissingAndTooLargeFailAtOnceWithoutRetry) {
    writeFile(directory / "big", std::string(100, 'x'));
    fs::create_symlink(directory / "nowhere", directory / "dangling");
    const auto started = steady_clock::now();
    for (const auto& [path, limit, expected] : std::vector<std::tuple<fs::path, int, SafeFileReaderError>>{
             {directory / "absent", 1024, SafeFileReaderError::missing},
             {directory / "dangling", 1024, SafeFileReaderError::missing},
             {directory / "big/child", 1024, SafeFileReaderError::missing},
             {directory / "big", 99, SafeFileReaderError::tooLarge}}) {
        const auto result = reader.read(path, limit, longDelay);
        ASSERT_FALSE(result.hasValue()) << path;
        EXPECT_EQ(result.error(), expected) << path;
    }
    EXPECT_LT(steady_clock::now() - started, longDelay / 2);
}

TEST_F(SafeFileReaderTest, DirectoryIsUnreadableAfterOneRetry) {
    const auto delay = 50ms;
    const auto started = steady_clock::now();
    const auto result = reader.read(directory.path(), 1 << 20, delay);
    const auto elapsed = steady_clock::now() - started;
    ASSERT_FALSE(result.hasValue());
    EXPECT_EQ(result.error(), SafeFileReaderError::unreadable);
    EXPECT_GE(elapsed, delay);
    EXPECT_LT(elapsed, longDelay);
}

// Opening a FIFO for reading would wait for a writer; the reader must not.
TEST_F(SafeFileReaderTest, FifoIsUnreadableAndDoesNotBlock) {
    ASSERT_EQ(::mkfifo((directory / "fifo").c_str(), 0600), 0);
    const auto result = reader.read(directory / "fifo", 1024, 1ms);
    ASSERT_FALSE(result.hasValue());
    EXPECT_EQ(result.error(), SafeFileReaderError::unreadable);
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
