#include "SpawnedProcess.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace gaugewell::testing {

std::unique_ptr<SpawnedProcess>
SpawnedProcess::start(const std::vector<std::string>& arguments,
                      const std::map<std::string, std::optional<std::string>>& environment, Output output) {
    std::map<std::string, std::string> variables;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text(*entry);
        const auto equals = text.find('=');
        if (equals != std::string::npos) {
            variables[text.substr(0, equals)] = text.substr(equals + 1);
        }
    }
    for (const auto& [name, value] : environment) {
        if (value) {
            variables[name] = *value;
        } else {
            variables.erase(name);
        }
    }
    std::vector<std::string> environmentText;
    for (const auto& [name, value] : variables) {
        environmentText.push_back(name + "=" + value);
    }
    std::vector<char*> environmentPointers;
    for (auto& text : environmentText) {
        environmentPointers.push_back(text.data());
    }
    environmentPointers.push_back(nullptr);
    std::vector<std::string> argumentCopies = arguments;
    std::vector<char*> argumentPointers;
    for (auto& text : argumentCopies) {
        argumentPointers.push_back(text.data());
    }
    argumentPointers.push_back(nullptr);

    int pipeDescriptors[2] = {-1, -1};
    if (::pipe2(pipeDescriptors, O_CLOEXEC) != 0) {
        return nullptr;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    if (output == Output::capture) {
        posix_spawn_file_actions_adddup2(&actions, pipeDescriptors[1], STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&actions, pipeDescriptors[1], STDERR_FILENO);
    } else {
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    }
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setpgroup(&attributes, 0);
    sigset_t defaults;
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF);

    pid_t child = -1;
    const int spawned = ::posix_spawn(&child, argumentPointers[0], &actions, &attributes,
                                      argumentPointers.data(), environmentPointers.data());
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    ::close(pipeDescriptors[1]);
    if (spawned != 0) {
        ::close(pipeDescriptors[0]);
        return nullptr;
    }
    // Called through syscall(2): glibc 2.36 declares pidfd_open without C linkage for C++.
    const int pidDescriptor = static_cast<int>(::syscall(SYS_pidfd_open, child, 0));
    return std::unique_ptr<SpawnedProcess>(new SpawnedProcess(child, pidDescriptor, pipeDescriptors[0]));
}

SpawnedProcess::SpawnedProcess(pid_t processID, int pidDescriptor, int outputDescriptor)
    : processID(processID)
    , pidDescriptor(pidDescriptor)
    , outputDescriptor(outputDescriptor) {}

SpawnedProcess::~SpawnedProcess() {
    kill();
    if (pidDescriptor >= 0) {
        ::close(pidDescriptor);
    }
    if (outputDescriptor >= 0) {
        ::close(outputDescriptor);
    }
}

void SpawnedProcess::kill() {
    if (reaped) {
        return;
    }
    ::kill(-processID, SIGKILL);
    int status = 0;
    while (::waitpid(processID, &status, 0) < 0 && errno == EINTR) {
    }
    reaped = true;
}

SpawnedProcess::Outcome SpawnedProcess::waitForExit(std::chrono::milliseconds timeout,
                                                    std::size_t maximumOutputBytes) {
    Outcome outcome;
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    bool outputOpen = outputDescriptor >= 0;
    bool exited = false;
    while (!exited) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            outcome.timedOut = true;
            kill();
            return outcome;
        }
        pollfd fds[2] = {{pidDescriptor, POLLIN, 0}, {outputOpen ? outputDescriptor : -1, POLLIN, 0}};
        if (::poll(fds, 2, static_cast<int>(left.count())) < 0 && errno != EINTR) {
            break;
        }
        if (fds[1].revents != 0) {
            char buffer[4096];
            const ssize_t count = ::read(outputDescriptor, buffer, sizeof buffer);
            if (count <= 0) {
                outputOpen = false;
            } else if (outcome.output.size() < maximumOutputBytes) {
                outcome.output.append(buffer, static_cast<std::size_t>(count));
            }
        }
        if (fds[0].revents != 0) {
            exited = true;
        }
    }
    // Whatever is still buffered in the pipe after the exit.
    while (outputOpen) {
        char buffer[4096];
        pollfd fd{outputDescriptor, POLLIN, 0};
        if (::poll(&fd, 1, 0) <= 0) {
            break;
        }
        const ssize_t count = ::read(outputDescriptor, buffer, sizeof buffer);
        if (count <= 0) {
            break;
        }
        if (outcome.output.size() < maximumOutputBytes) {
            outcome.output.append(buffer, static_cast<std::size_t>(count));
        }
    }
    int status = 0;
    while (::waitpid(processID, &status, 0) < 0 && errno == EINTR) {
    }
    reaped = true;
    if (WIFEXITED(status)) {
        outcome.exitCode = WEXITSTATUS(status);
    }
    ::kill(-processID, SIGKILL); // anything the child left behind in its group
    return outcome;
}

} // namespace gaugewell::testing
