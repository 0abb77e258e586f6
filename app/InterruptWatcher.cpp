#include "InterruptWatcher.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace gaugewell {

namespace {

int signalPipe[2] = {-1, -1};

void onSignal(int) {
    const int saved = errno;
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(signalPipe[1], &byte, 1); // async-signal-safe
    errno = saved;
}

} // namespace

InterruptWatcher::InterruptWatcher(std::function<void()> onInterrupt,
                                   std::initializer_list<int> watchedSignals)
    : onInterrupt(std::move(onInterrupt)) {
    if (::pipe2(signalPipe, O_CLOEXEC | O_NONBLOCK) != 0 || ::pipe2(stopPipe, O_CLOEXEC) != 0) {
        return; // without pipes Ctrl-C keeps its default meaning
    }
    struct sigaction action {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (const int signal : watchedSignals) {
        struct sigaction old {};
        ::sigaction(signal, &action, &old);
        previous.emplace_back(signal, old);
    }
    watcher = std::thread([this] {
        pollfd fds[2] = {{signalPipe[0], POLLIN, 0}, {stopPipe[0], POLLIN, 0}};
        while (true) {
            if (::poll(fds, 2, -1) < 0) {
                if (errno == EINTR) {
                    continue;
                }
                return;
            }
            if (fds[1].revents != 0) {
                return;
            }
            if (fds[0].revents != 0) {
                char byte;
                while (::read(signalPipe[0], &byte, 1) > 0) {
                }
                wasInterrupted = true;
                this->onInterrupt();
            }
        }
    });
}

InterruptWatcher::~InterruptWatcher() {
    if (watcher.joinable()) {
        for (const auto& [signal, old] : previous) {
            ::sigaction(signal, &old, nullptr);
        }
        const char byte = 1;
        [[maybe_unused]] const auto written = ::write(stopPipe[1], &byte, 1);
        watcher.join();
    }
    for (int* fds : {signalPipe, stopPipe}) {
        for (int index = 0; index < 2; ++index) {
            if (fds[index] >= 0) {
                ::close(fds[index]);
                fds[index] = -1;
            }
        }
    }
}

} // namespace gaugewell
