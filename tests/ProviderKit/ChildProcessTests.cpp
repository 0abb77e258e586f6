#include "ProviderKit/Process/ChildProcess.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <unistd.h>

namespace gaugewell {
namespace {

// Exit status, output, launch failures, the environment and the kill after SIGTERM: PosixCommandRunnerTests.

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

TEST(ChildProcess, InheritsOnlyItsStandardStreams) {
    // A descriptor of ours without close-on-exec must still not reach the child.
    int extra[2];
    ASSERT_EQ(::pipe(extra), 0);
    auto child = spawnShell("ls /proc/self/fd");
    std::istringstream listing(readAll(child.outputDescriptor()));
    child.waitUntilExit();
    ::close(extra[0]);
    ::close(extra[1]);
    // 0, 1, 2 and the descriptor `ls` opened for the listing itself.
    for (std::string entry; listing >> entry;) {
        EXPECT_LE(std::stoi(entry), 3) << entry;
    }
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

TEST(ChildProcess, DestroyingARunningChildTerminatesAndReapsIt) {
    pid_t pid;
    {
        auto child = spawnShell("exec sleep 60");
        pid = child.pid();
        EXPECT_TRUE(child.isRunning());
    }
    EXPECT_FALSE(std::filesystem::exists("/proc/" + std::to_string(pid)));
}

} // namespace
} // namespace gaugewell
