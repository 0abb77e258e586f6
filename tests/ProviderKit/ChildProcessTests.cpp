#include "ProviderKit/Process/ChildProcess.h"

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <poll.h>
#include <sstream>
#include <unistd.h>

namespace gaugewell {
namespace {

std::string readAll(int fd) {
    std::string text;
    char buffer[4096];
    ssize_t count;
    while ((count = ::read(fd, buffer, sizeof buffer)) > 0) {
        text.append(buffer, static_cast<std::size_t>(count));
    }
    return text;
}

ChildProcess spawnShell(const std::string& script, ChildProcess::Streams streams = {}) {
    auto child = ChildProcess::spawn("/bin/sh", {"-c", script}, {{"PATH", "/usr/bin:/bin"}}, streams);
    EXPECT_TRUE(child.hasValue());
    return std::move(child).value();
}

// The mask of ignored signals from /proc/<pid>/status.
unsigned long long ignoredSignals(pid_t pid) {
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("SigIgn:", 0) == 0) {
            return std::stoull(line.substr(7), nullptr, 16);
        }
    }
    return ~0ULL;
}

TEST(ChildProcess, ReportsExitStatusAndOutput) {
    auto child = spawnShell("printf out; printf err >&2; exit 3");
    const auto out = readAll(child.outputDescriptor());
    const auto err = readAll(child.errorDescriptor());
    EXPECT_EQ(child.waitUntilExit(), 3);
    EXPECT_EQ(out, "out");
    EXPECT_EQ(err, "err");
    EXPECT_FALSE(child.isRunning());
}

TEST(ChildProcess, MissingOrNonExecutableProgramFailsToLaunch) {
    EXPECT_FALSE(ChildProcess::spawn("/nonexistent/codex", {}, {}, {}).hasValue());
    const auto plain =
        std::filesystem::temp_directory_path() / ("not-executable-" + std::to_string(::getpid()));
    std::ofstream(plain) << "#!/bin/sh\n";
    EXPECT_FALSE(ChildProcess::spawn(plain, {}, {}, {}).hasValue());
    std::filesystem::remove(plain);
}

TEST(ChildProcess, EnvironmentReplacesOurs) {
    ::setenv("GAUGEWELL_SHOULD_NOT_LEAK", "1", 1);
    auto child = ChildProcess::spawn("/usr/bin/env", {}, {{"ONLY", "this"}}, {});
    ASSERT_TRUE(child.hasValue());
    EXPECT_EQ(readAll(child->outputDescriptor()), "ONLY=this\n");
    ::unsetenv("GAUGEWELL_SHOULD_NOT_LEAK");
}

TEST(ChildProcess, InheritsOnlyItsStandardStreams) {
    // A descriptor of ours without close-on-exec must still not reach the child.
    int extra[2];
    ASSERT_EQ(::pipe(extra), 0);
    auto child = spawnShell("ls /proc/self/fd");
    std::istringstream listing(readAll(child.outputDescriptor()));
    child.waitUntilExit();
    std::vector<int> fds;
    for (std::string entry; listing >> entry;) {
        fds.push_back(std::stoi(entry));
    }
    // 0, 1, 2 and the descriptor `ls` opened for the listing itself.
    EXPECT_LE(fds.size(), 4u);
    for (const int fd : fds) {
        EXPECT_TRUE(fd <= 3) << fd;
    }
    ::close(extra[0]);
    ::close(extra[1]);
}

TEST(ChildProcess, ChildGetsDefaultSignalDispositionsEvenThoughWeIgnoreSigpipe) {
    const auto previous = std::signal(SIGPIPE, SIG_IGN);
    auto child = spawnShell(
        "read line", {ChildProcess::Stream::pipe, ChildProcess::Stream::null, ChildProcess::Stream::null});
    EXPECT_EQ(ignoredSignals(child.pid()) & (1ULL << (SIGPIPE - 1)), 0u);
    child.closeInput();
    EXPECT_EQ(child.waitUntilExit(), 1);
    std::signal(SIGPIPE, previous);
}

TEST(ChildProcess, TerminateKillsAChildThatIgnoresSigterm) {
    auto child = spawnShell("trap '' TERM; echo ready; while :; do :; done");
    char ready[6] = {};
    ASSERT_EQ(::read(child.outputDescriptor(), ready, 6), 6);
    EXPECT_EQ(child.terminate(std::chrono::milliseconds(50)), SIGKILL);
    EXPECT_FALSE(std::filesystem::exists("/proc/" + std::to_string(child.pid())));
}

TEST(ChildProcess, DestroyingARunningChildTerminatesAndReapsIt) {
    pid_t pid;
    {
        auto child = spawnShell("exec sleep 60");
        pid = child.pid();
        EXPECT_TRUE(child.isRunning());
    }
    EXPECT_FALSE(std::filesystem::exists("/proc/" + std::to_string(pid)));
}

TEST(ChildProcess, MovedFromObjectOwnsNothing) {
    auto child = spawnShell("exit 0");
    ChildProcess moved = std::move(child);
    EXPECT_EQ(child.outputDescriptor(), -1);
    EXPECT_EQ(moved.waitUntilExit(), 0);
}

} // namespace
} // namespace gaugewell
