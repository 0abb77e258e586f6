#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace gaugewell::testing {

// A child process for tests, in its own process group, with its standard output (and standard error,
// if wanted) captured up to a limit. Waiting is bounded; the destructor kills the whole group and reaps.
class SpawnedProcess {
public:
    enum class Output { discard, capture };

    struct Outcome {
        std::optional<int> exitCode; // absent when killed by a signal or timed out
        bool timedOut = false;
        std::string output; // standard output, then standard error interleaved as written
    };

    // `environment` changes the current environment: a value sets, an absent value removes.
    // Null when the program cannot be started.
    static std::unique_ptr<SpawnedProcess>
    start(const std::vector<std::string>& arguments,
          const std::map<std::string, std::optional<std::string>>& environment, Output output);
    ~SpawnedProcess();
    SpawnedProcess(const SpawnedProcess&) = delete;
    SpawnedProcess& operator=(const SpawnedProcess&) = delete;

    pid_t pid() const { return processID; }
    // Collects output until the process exits or the time-out passes (then kills the group).
    Outcome waitForExit(std::chrono::milliseconds timeout, std::size_t maximumOutputBytes = 1 << 20);
    // SIGKILL to the process group, then reap.
    void kill();

private:
    SpawnedProcess(pid_t processID, int pidDescriptor, int outputDescriptor);

    pid_t processID;
    int pidDescriptor;
    int outputDescriptor;
    bool reaped = false;
};

} // namespace gaugewell::testing
