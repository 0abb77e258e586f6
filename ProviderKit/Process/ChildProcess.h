#pragma once

#include "Platform/Deadline.h"
#include "Platform/FileDescriptor.h"
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
// (we ignore SIGPIPE; the child must not). It leads a process group of its own, and ending it
// ends the group: whatever the child started (a tool's own `git`, say) goes with it. Destroying
// a ChildProcess that has not been reaped ends it and reaps it, so no child outlives its owner
// and no zombie is left.
class ChildProcess {
public:
    enum class Stream { inherit, null, pipe };

    struct Streams {
        Stream input = Stream::null;
        Stream output = Stream::pipe;
        Stream error = Stream::pipe;
    };
    // `childOnly` for a launcher whose descendants belong to the user (a browser): ending it
    // leaves them alone.
    enum class Reach { group, childOnly };

    // `executable` is a path, not looked up in PATH; `environment` replaces ours entirely.
    static Expected<ChildProcess, ChildProcessError> spawn(const std::string& executable,
                                                           const std::vector<std::string>& arguments,
                                                           const Environment& environment, Streams streams,
                                                           Reach reach = Reach::group);

    ChildProcess(ChildProcess&& other) noexcept;
    ChildProcess& operator=(ChildProcess&& other) noexcept;
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess();

    pid_t pid() const { return pid_; }
    // Our ends of the pipes; -1 for streams that are not piped (or already closed).
    int inputDescriptor() const { return input.get(); }
    int outputDescriptor() const { return output.get(); }
    int errorDescriptor() const { return error.get(); }
    void closeInput() { input.reset(); }
    void closeOutput() { output.reset(); }
    void closeError() { error.reset(); }

    // Without reaping, so that the group can still be ended. True while it is still running.
    bool isRunning();
    // Sleeps until the child exits or the deadline passes; true when it has exited.
    bool waitForExit(Deadline deadline);
    // Reaps the child if it has exited: the exit code, or the signal number for a child killed
    // by a signal (as a process object reports it); absent while running. What the child
    // started is then on its own.
    std::optional<int> terminationStatus();
    // Blocks until the child exits and returns its termination status.
    int waitUntilExit();
    // SIGTERM to the group, then SIGKILL to what is left of it after `grace` (also when the child
    // itself has already exited); always reaps.
    int terminate(std::chrono::milliseconds grace = defaultTerminationGrace);
    // SIGTERM to the group led by `leader`, from any thread, as long as the owner has not reaped
    // the leader; the owner then reaps it.
    static void signalGroup(pid_t leader);

    static constexpr std::chrono::milliseconds defaultTerminationGrace{500};

private:
    ChildProcess(pid_t pid, Reach reach, FileDescriptor input, FileDescriptor output, FileDescriptor error);
    void release();
    bool reap(bool block);
    bool hasExited();
    void signal(int number);

    pid_t pid_ = -1;
    Reach reach = Reach::group;
    FileDescriptor input;
    FileDescriptor output;
    FileDescriptor error;
    // Readable once the child has exited; absent where the kernel has no pidfd_open.
    FileDescriptor exitNotice;
    std::optional<int> status;
};

} // namespace gaugewell
