#pragma once

#include <csignal>
#include <functional>
#include <thread>

namespace gaugewell {

// While it lives, Ctrl-C (SIGINT) calls `onInterrupt` on a thread of its own instead of killing
// the process, so that a blocking sign-in can be cancelled cleanly: its child terminated, its
// listener closed, nothing stored. One at a time per process.
class InterruptWatcher {
public:
    explicit InterruptWatcher(std::function<void()> onInterrupt);
    ~InterruptWatcher();
    InterruptWatcher(const InterruptWatcher&) = delete;
    InterruptWatcher& operator=(const InterruptWatcher&) = delete;

    bool interrupted() const { return wasInterrupted; }

private:
    std::function<void()> onInterrupt;
    struct sigaction previous {};
    int stopPipe[2] = {-1, -1};
    std::thread watcher;
    bool wasInterrupted = false;
};

} // namespace gaugewell
