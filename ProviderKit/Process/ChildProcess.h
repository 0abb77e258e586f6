#pragma once

#include "ProviderKit/Process/Environment.h"
#include "UsageDomain/Expected.h"

#include <chrono>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace gaugewell {

enum class ChildProcessError { launchFailed };

// One running child with optional pipes to its standard streams. The child inherits no
// descriptor of ours but the three standard streams, and default signal dispositions
// (we ignore SIGPIPE; the child must not). Destroying a ChildProcess that has not been
// reaped terminates and reaps it, so no child outlives its owner and no zombie is left.
class ChildProcess {
public:
    enum class Stream { inherit, null, pipe };

    struct Streams {
        Stream input = Stream::null;
        Stream output = Stream::pipe;
        Stream error = Stream::pipe;
    };

    // `executable` is a path, not looked up in PATH; `environment` replaces ours entirely.
    static Expected<ChildProcess, ChildProcessError> spawn(const std::string& executable,
                                                           const std::vector<std::string>& arguments,
                                                           const Environment& environment, Streams streams);

    ChildProcess(ChildProcess&& other) noexcept;
    ChildProcess& operator=(ChildProcess&& other) noexcept;
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess();

    pid_t pid() const { return pid_; }
    // Our ends of the pipes; -1 for streams that are not piped (or already closed).
    int inputDescriptor() const { return input; }
    int outputDescriptor() const { return output; }
    int errorDescriptor() const { return error; }
    void closeInput();
    void closeOutput();
    void closeError();

    // Reaps the child if it has exited, without blocking. True while it is still running.
    bool isRunning();
    // The exit code, or the signal number for a child killed by a signal (as a process
    // object reports it); absent while running.
    std::optional<int> terminationStatus();
    // Blocks until the child exits and returns its termination status.
    int waitUntilExit();
    // SIGTERM, then SIGKILL if it is still running after `grace`; always reaps.
    int terminate(std::chrono::milliseconds grace = defaultTerminationGrace);

    static constexpr std::chrono::milliseconds defaultTerminationGrace{500};

private:
    ChildProcess(pid_t pid, int input, int output, int error)
        : pid_(pid)
        , input(input)
        , output(output)
        , error(error) {}
    void release();
    bool reap(bool block);

    pid_t pid_ = -1;
    int input = -1;
    int output = -1;
    int error = -1;
    std::optional<int> status;
};

} // namespace gaugewell
