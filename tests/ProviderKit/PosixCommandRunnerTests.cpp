#include "FakeCodex.h"
#include "ProviderKit/Process/PosixCommandRunner.h"
#include "TemporaryDirectory.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <thread>
#include <unistd.h>

namespace gaugewell {
namespace {

namespace fs = std::filesystem;
using std::chrono::steady_clock;
using testing::TemporaryDirectory;

const Environment shellEnvironment{{"PATH", "/usr/bin:/bin"}};

std::size_t openDescriptorCount() {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

// Peak resident memory in KiB since the last reset.
long peakResidentKiB() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmHWM:", 0) == 0) {
            return std::stol(line.substr(6));
        }
    }
    return -1;
}

// Whether the process whose id a script wrote to `pidFile` still runs a moment later: a signal
// takes effect asynchronously, and an orphan is reaped by whoever adopted it, so a zombie counts
// as gone.
bool isAlive(const std::filesystem::path& pidFile) {
    pid_t pid = 0;
    std::ifstream(pidFile) >> pid;
    if (pid <= 0) {
        return false;
    }
    const auto gone = [pid] {
        std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
        std::string line;
        if (!std::getline(stat, line)) {
            return true;
        }
        const auto state = line.rfind(") ");
        return state == std::string::npos || line.at(state + 2) == 'Z';
    };
    for (int attempt = 0; attempt < 200; ++attempt) {
        if (gone()) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

bool resetPeakResident() {
    std::ofstream clear("/proc/self/clear_refs");
    clear << "5";
    clear.flush();
    return clear.good();
}

class PosixCommandRunnerTest : public ::testing::Test {
protected:
    // The app ignores SIGPIPE at start-up; the tests run under the same condition.
    void SetUp() override { previousSigpipe = std::signal(SIGPIPE, SIG_IGN); }
    void TearDown() override {
        std::signal(SIGPIPE, previousSigpipe);
        EXPECT_EQ(testing::childrenOfThisProcess(), std::vector<pid_t>());
    }

    Expected<CommandOutput, ProcessSupportError>
    shell(const std::string& script, std::chrono::milliseconds timeout = std::chrono::seconds(10),
          std::int64_t limit = 65536) const {
        return runner.run("/bin/sh", {"-c", script}, shellEnvironment, timeout, limit);
    }

    PosixCommandRunner runner;
    TemporaryDirectory directory;
    void (*previousSigpipe)(int) = SIG_DFL;
};

TEST_F(PosixCommandRunnerTest, NonZeroExitIsAResultNotAnError) {
    const auto result = shell("exit 3");
    ASSERT_TRUE(result.hasValue());
    EXPECT_EQ(result->status, 3);
    EXPECT_EQ(result->standardOutput, "");
    EXPECT_EQ(result->standardError, "");
}

TEST_F(PosixCommandRunnerTest, PassesArgumentsVerbatimAndOnlyTheGivenEnvironment) {
    ::setenv("GAUGEWELL_SECRET_FOR_TEST", "leak", 1);
    const auto result =
        runner.run("/bin/sh", {"-c", "printf '%s|' \"$@\"; env", "sh", "a b", "", "*", "$HOME"},
                   {{"ONLY", "this"}}, std::chrono::seconds(10), 65536);
    ::unsetenv("GAUGEWELL_SECRET_FOR_TEST");
    ASSERT_TRUE(result.hasValue());
    EXPECT_EQ(result->standardOutput.rfind("a b||*|$HOME|", 0), 0u);
    EXPECT_EQ(result->standardOutput.find("GAUGEWELL_SECRET_FOR_TEST"), std::string::npos);
    EXPECT_NE(result->standardOutput.find("ONLY=this"), std::string::npos);
}

TEST_F(PosixCommandRunnerTest, ChildReadsTheNullDeviceNotOurInput) {
    const auto result =
        runner.run("/bin/readlink", {"/proc/self/fd/0"}, shellEnvironment, std::chrono::seconds(10), 4096);
    ASSERT_TRUE(result.hasValue());
    EXPECT_EQ(result->standardOutput, "/dev/null\n");
}

TEST_F(PosixCommandRunnerTest, UnlaunchableExecutablesAreLaunchFailures) {
    testing::writeFile(directory / "codex", "#!/bin/sh\nexit 0\n"); // not executable
    for (const fs::path& executable :
         {directory / "no-such-codex", directory / "codex", directory.path(), fs::path()}) {
        SCOPED_TRACE(executable);
        const auto result = runner.run(executable, {}, shellEnvironment, std::chrono::seconds(10), 4096);
        ASSERT_FALSE(result.hasValue());
        EXPECT_EQ(result.error(), ProcessSupportError::launchFailed);
    }
}

struct OutputLimitCase {
    std::int64_t limit;
    int outputBytes;
    int errorBytes;
    bool accepted;
};

class PosixCommandRunnerOutputLimit : public PosixCommandRunnerTest,
                                      public ::testing::WithParamInterface<OutputLimitCase> {};

// The limit is on both streams together, and a total equal to it is accepted.
TEST_P(PosixCommandRunnerOutputLimit, AppliesToBothStreamsTogether) {
    const auto& param = GetParam();
    const auto result = shell("head -c " + std::to_string(param.outputBytes) + " /dev/zero; head -c " +
                                  std::to_string(param.errorBytes) + " /dev/zero >&2",
                              std::chrono::seconds(10), param.limit);
    if (param.accepted) {
        ASSERT_TRUE(result.hasValue());
        EXPECT_EQ(result->standardOutput.size(), static_cast<std::size_t>(param.outputBytes));
        EXPECT_EQ(result->standardError.size(), static_cast<std::size_t>(param.errorBytes));
    } else {
        ASSERT_FALSE(result.hasValue());
        EXPECT_EQ(result.error(), ProcessSupportError::outputLimitExceeded);
    }
}

INSTANTIATE_TEST_SUITE_P(Totals, PosixCommandRunnerOutputLimit,
                         ::testing::Values(OutputLimitCase{10, 6, 4, true}, OutputLimitCase{10, 7, 4, false},
                                           OutputLimitCase{10, 6, 5, false}, OutputLimitCase{-1, 0, 0, false},
                                           // Nearly a full pipe on each stream.
                                           OutputLimitCase{120000, 60000, 60000, true},
                                           OutputLimitCase{119999, 60000, 60000, false}));

class PosixCommandRunnerDeadline : public PosixCommandRunnerTest,
                                   public ::testing::WithParamInterface<bool> {};

// A child that outlives the deadline is ended (killed if it ignores SIGTERM) with everything it
// started, and reaped before the call returns, shortly after the deadline.
TEST_P(PosixCommandRunnerDeadline, EndsAChildStillRunningAtTheDeadlineWithItsDescendants) {
    const bool ignoresTerminate = GetParam();
    const auto pidFile = directory / "pid";
    const auto descendantFile = directory / "descendant";
    const auto timeout = std::chrono::milliseconds(500);
    const auto started = steady_clock::now();
    const auto result = shell(std::string(ignoresTerminate ? "trap '' TERM; " : "") +
                                  "sleep 60 >/dev/null 2>&1 & echo $! > '" + descendantFile.string() +
                                  "'; echo $$ > '" + pidFile.string() + "'; exec sleep 60",
                              timeout);
    const auto elapsed = steady_clock::now() - started;

    ASSERT_FALSE(result.hasValue());
    EXPECT_EQ(result.error(), ProcessSupportError::timedOut);
    EXPECT_GE(elapsed, timeout);
    EXPECT_LT(elapsed, timeout + PosixCommandRunner::terminationGrace + std::chrono::seconds(2));
    pid_t pid = 0;
    std::ifstream(pidFile) >> pid;
    ASSERT_GT(pid, 0);
    EXPECT_FALSE(fs::exists("/proc/" + std::to_string(pid)));
    EXPECT_FALSE(isAlive(descendantFile));
}

// A tool that exits leaving a helper behind (the real `codex` leaves `git`) takes it along.
TEST_F(PosixCommandRunnerTest, ChildThatExitsTakesWhatItLeftRunningAlong) {
    const auto descendantFile = directory / "descendant";
    const auto result =
        shell("sleep 60 >/dev/null 2>&1 & echo $! > '" + descendantFile.string() + "'; exit 0");
    ASSERT_TRUE(result.hasValue());
    EXPECT_FALSE(isAlive(descendantFile));
}

INSTANTIATE_TEST_SUITE_P(Children, PosixCommandRunnerDeadline, ::testing::Bool(),
                         [](const auto& info) { return info.param ? "IgnoringSigterm" : "Obedient"; });

class PosixCommandRunnerFlood : public PosixCommandRunnerTest, public ::testing::WithParamInterface<bool> {
protected:
    std::string redirect() const { return GetParam() ? " >&2" : ""; }
};

// Nothing reads while the child runs: a flooding child fills the pipe, blocks, and times out
// instead of filling our memory or blocking us.
TEST_P(PosixCommandRunnerFlood, ChildThatKeepsWritingTimesOut) {
    const auto result = shell("exec cat /dev/zero" + redirect(), std::chrono::milliseconds(300), 1 << 20);
    ASSERT_FALSE(result.hasValue());
    EXPECT_EQ(result.error(), ProcessSupportError::timedOut);
}

// A descendant that keeps writing after the child has exited is read only up to the limit.
TEST_P(PosixCommandRunnerFlood, WritingAfterTheChildExitedIsCutOffAtTheLimit) {
    constexpr std::int64_t limit = 1 << 20;
    ASSERT_TRUE(resetPeakResident());
    const long residentBefore = peakResidentKiB();
    const auto result = shell("cat /dev/zero" + redirect() + " & exit 0", std::chrono::seconds(20), limit);
    const long peakGrowth = peakResidentKiB() - residentBefore;

    ASSERT_FALSE(result.hasValue());
    EXPECT_EQ(result.error(), ProcessSupportError::outputLimitExceeded);
    // The buffer and its growth steps, with room for allocator and sanitizer overhead.
    EXPECT_LT(peakGrowth, 16 * 1024) << "KiB";
}

INSTANTIATE_TEST_SUITE_P(Streams, PosixCommandRunnerFlood, ::testing::Bool(),
                         [](const auto& info) { return info.param ? "StandardError" : "StandardOutput"; });

// Every run closes its pipes and reaps its child, also when runs overlap on several threads.
TEST_F(PosixCommandRunnerTest, ThousandRunsLeaveNoDescriptorOrZombie) {
    const auto descriptorsBefore = openDescriptorCount();
    constexpr int threadCount = 4;
    constexpr int runsPerThread = 250;
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([&] {
            for (int run = 0; run < runsPerThread; ++run) {
                const auto result =
                    runner.run("/bin/true", {}, shellEnvironment, std::chrono::seconds(10), 1024);
                if (!result || result->status != 0) {
                    ++failures;
                }
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(failures.load(), 0);
    EXPECT_EQ(openDescriptorCount(), descriptorsBefore);
    EXPECT_EQ(testing::childrenOfThisProcess(), std::vector<pid_t>());
}

} // namespace
} // namespace gaugewell
