#include "ProviderKit/Process/ChildProcess.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace gaugewell {

namespace {

struct Pipe {
    int read = -1;
    int write = -1;
};

void closeQuietly(int& fd) {
    if (fd >= 0) {
        ::close(fd);
        fd = -1;
    }
}

// Closes whatever it still owns when a spawn fails half-way.
struct SpawnResources {
    Pipe pipes[3];
    int null = -1;
    ~SpawnResources() {
        for (auto& pipe : pipes) {
            closeQuietly(pipe.read);
            closeQuietly(pipe.write);
        }
        closeQuietly(null);
    }
};

int statusFromWait(int raw) {
    if (WIFEXITED(raw)) {
        return WEXITSTATUS(raw);
    }
    if (WIFSIGNALED(raw)) {
        return WTERMSIG(raw);
    }
    return -1;
}

} // namespace

Expected<ChildProcess, ChildProcessError> ChildProcess::spawn(const std::string& executable,
                                                              const std::vector<std::string>& arguments,
                                                              const Environment& environment, Streams streams,
                                                              Reach reach) {
    SpawnResources resources;
    const Stream modes[3] = {streams.input, streams.output, streams.error};
    for (int index = 0; index < 3; ++index) {
        if (modes[index] == Stream::pipe) {
            int fds[2];
            if (::pipe2(fds, O_CLOEXEC) != 0) {
                return unexpected(ChildProcessError::launchFailed);
            }
            resources.pipes[index] = {fds[0], fds[1]};
        } else if (modes[index] == Stream::null && resources.null < 0) {
            resources.null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
            if (resources.null < 0) {
                return unexpected(ChildProcessError::launchFailed);
            }
        }
    }

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (int index = 0; index < 3; ++index) {
        const auto& pipe = resources.pipes[index];
        if (modes[index] == Stream::pipe) {
            // dup2 clears close-on-exec on the copy: the child keeps exactly its standard streams.
            posix_spawn_file_actions_adddup2(&actions, index == 0 ? pipe.read : pipe.write, index);
        } else if (modes[index] == Stream::null) {
            posix_spawn_file_actions_adddup2(&actions, resources.null, index);
        }
    }
    // Libraries we link do not all open their descriptors close-on-exec; the child gets none of them.
    posix_spawn_file_actions_addclosefrom_np(&actions, 3);

    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t defaults;
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    sigaddset(&defaults, SIGTERM);
    sigaddset(&defaults, SIGINT);
    sigset_t emptyMask;
    sigemptyset(&emptyMask);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setsigmask(&attributes, &emptyMask);
    // A group of its own: the child and what it starts can be ended together, and a Ctrl-C in
    // our terminal reaches us, not a child in the middle of an exchange.
    posix_spawnattr_setpgroup(&attributes, 0);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK |
                                              (reach == Reach::group ? POSIX_SPAWN_SETPGROUP : 0));

    std::vector<std::string> argumentStorage;
    argumentStorage.reserve(arguments.size() + 1);
    argumentStorage.push_back(executable);
    argumentStorage.insert(argumentStorage.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (auto& argument : argumentStorage) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);

    std::vector<std::string> environmentStorage;
    environmentStorage.reserve(environment.size());
    for (const auto& [key, value] : environment) {
        environmentStorage.push_back(key + "=" + value);
    }
    std::vector<char*> envp;
    for (auto& entry : environmentStorage) {
        envp.push_back(entry.data());
    }
    envp.push_back(nullptr);

    pid_t pid = -1;
    // glibc's posix_spawn reports a failed exec as an error here, not as a child exiting 127.
    const int result =
        ::posix_spawn(&pid, executable.c_str(), &actions, &attributes, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    if (result != 0) {
        return unexpected(ChildProcessError::launchFailed);
    }

    // Keep our ends; the child's ends are closed by `resources`.
    return ChildProcess(pid, reach, FileDescriptor(std::exchange(resources.pipes[0].write, -1)),
                        FileDescriptor(std::exchange(resources.pipes[1].read, -1)),
                        FileDescriptor(std::exchange(resources.pipes[2].read, -1)));
}

ChildProcess::ChildProcess(pid_t pid, Reach reach, FileDescriptor input, FileDescriptor output,
                           FileDescriptor error)
    : pid_(pid)
    , reach(reach)
    , input(std::move(input))
    , output(std::move(output))
    , error(std::move(error))
    // Unreaped, so the id cannot have been reused. (glibc 2.36 declares no pidfd_open for C++.)
    , exitNotice(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0))) {}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept
    : pid_(std::exchange(other.pid_, -1))
    , reach(other.reach)
    , input(std::move(other.input))
    , output(std::move(other.output))
    , error(std::move(other.error))
    , exitNotice(std::move(other.exitNotice))
    , status(other.status) {}

ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept {
    if (this != &other) {
        release();
        pid_ = std::exchange(other.pid_, -1);
        reach = other.reach;
        input = std::move(other.input);
        output = std::move(other.output);
        error = std::move(other.error);
        exitNotice = std::move(other.exitNotice);
        status = other.status;
    }
    return *this;
}

ChildProcess::~ChildProcess() {
    release();
}

void ChildProcess::release() {
    input.reset();
    output.reset();
    error.reset();
    if (pid_ > 0 && !status) {
        terminate();
    }
    exitNotice.reset();
    pid_ = -1;
}

bool ChildProcess::reap(bool block) {
    if (status) {
        return true;
    }
    if (pid_ <= 0) {
        return false;
    }
    int raw = 0;
    pid_t result;
    do {
        result = ::waitpid(pid_, &raw, block ? 0 : WNOHANG);
    } while (result < 0 && errno == EINTR);
    if (result == pid_) {
        status = statusFromWait(raw);
        return true;
    }
    if (result < 0) {
        status = -1; // not our child any more (reaped elsewhere): nothing left to wait for
        return true;
    }
    return false;
}

bool ChildProcess::hasExited() {
    if (status || pid_ <= 0) {
        return true;
    }
    siginfo_t info{};
    int result;
    do {
        result = ::waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOHANG | WNOWAIT);
    } while (result < 0 && errno == EINTR);
    if (result < 0) {
        // Not our child any more (reaped elsewhere): its id may be reused, so it is never signalled.
        status = -1;
        return true;
    }
    return info.si_pid == pid_;
}

void ChildProcess::signal(int number) {
    // Only while the leader is unreaped: its zombie keeps the group's id from being reused.
    if (pid_ > 0 && !status) {
        ::kill(reach == Reach::group ? -pid_ : pid_, number);
    }
}

void ChildProcess::signalGroup(pid_t leader) {
    if (leader > 0) {
        ::kill(-leader, SIGTERM);
    }
}

bool ChildProcess::isRunning() {
    return !hasExited();
}

bool ChildProcess::waitForExit(Deadline deadline) {
    while (!hasExited()) {
        if (deadline.hasPassed()) {
            return false;
        }
        if (exitNotice) {
            pollfd exited{exitNotice.get(), POLLIN, 0};
            ::poll(&exited, 1, deadline.pollMilliseconds());
        } else {
            std::this_thread::sleep_for(
                std::min<Deadline::Clock::duration>(deadline.remaining(), std::chrono::milliseconds(5)));
        }
    }
    return true;
}

std::optional<int> ChildProcess::terminationStatus() {
    reap(false);
    return status;
}

int ChildProcess::waitUntilExit() {
    reap(true);
    return status.value_or(-1);
}

int ChildProcess::terminate(std::chrono::milliseconds grace) {
    if (status) {
        return *status;
    }
    signal(SIGTERM);
    waitForExit(Deadline::after(grace));
    // The child, if it ignored SIGTERM, and whatever of its group is still there.
    signal(SIGKILL);
    return waitUntilExit();
}

} // namespace gaugewell
