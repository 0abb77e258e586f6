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
                                                              const Environment& environment,
                                                              Streams streams) {
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
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);

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
    ChildProcess child(pid, resources.pipes[0].write, resources.pipes[1].read, resources.pipes[2].read);
    resources.pipes[0].write = -1;
    resources.pipes[1].read = -1;
    resources.pipes[2].read = -1;
    return child;
}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept
    : pid_(other.pid_)
    , input(other.input)
    , output(other.output)
    , error(other.error)
    , status(other.status) {
    other.pid_ = -1;
    other.input = other.output = other.error = -1;
}

ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept {
    if (this != &other) {
        release();
        pid_ = other.pid_;
        input = other.input;
        output = other.output;
        error = other.error;
        status = other.status;
        other.pid_ = -1;
        other.input = other.output = other.error = -1;
    }
    return *this;
}

ChildProcess::~ChildProcess() {
    release();
}

void ChildProcess::release() {
    closeQuietly(input);
    closeQuietly(output);
    closeQuietly(error);
    if (pid_ > 0 && !status) {
        terminate();
    }
    pid_ = -1;
}

void ChildProcess::closeInput() {
    closeQuietly(input);
}
void ChildProcess::closeOutput() {
    closeQuietly(output);
}
void ChildProcess::closeError() {
    closeQuietly(error);
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

bool ChildProcess::isRunning() {
    return !reap(false);
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
    if (reap(false)) {
        return *status;
    }
    // Unreaped, so the id cannot have been reused: a process descriptor lets us sleep until the
    // exit itself rather than polling for it. (glibc 2.36 declares no pidfd_open for C++.)
    const int exitDescriptor = static_cast<int>(::syscall(SYS_pidfd_open, pid_, 0));
    ::kill(pid_, SIGTERM);
    const auto deadline = std::chrono::steady_clock::now() + grace;
    while (!reap(false)) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            break;
        }
        if (exitDescriptor >= 0) {
            pollfd exited{exitDescriptor, POLLIN, 0};
            ::poll(&exited, 1, static_cast<int>(std::min<long long>(left.count(), 60'000)));
        } else {
            std::this_thread::sleep_for(std::min(left, std::chrono::milliseconds(5)));
        }
    }
    if (exitDescriptor >= 0) {
        ::close(exitDescriptor);
    }
    if (status) {
        return *status;
    }
    ::kill(pid_, SIGKILL);
    return waitUntilExit();
}

} // namespace gaugewell
