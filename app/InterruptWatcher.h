#pragma once

#include <csignal>
#include <functional>
#include <initializer_list>
#include <thread>
#include <utility>
#include <vector>

namespace gaugewell {

// While it lives, the given signals (by default Ctrl-C's SIGINT) call `onInterrupt` on a thread of
// its own instead of ending the process, so that a blocking sign-in can be cancelled cleanly or an
// event loop asked to quit. One at a time per process.
class InterruptWatcher {
public:
    explicit InterruptWatcher(std::function<void()> onInterrupt,
                              std::initializer_list<int> watchedSignals = {SIGINT});
    ~InterruptWatcher();
    InterruptWatcher(const InterruptWatcher&) = delete;
    InterruptWatcher& operator=(const InterruptWatcher&) = delete;

    bool interrupted() const { return wasInterrupted; }

private:
    std::function<void()> onInterrupt;
    std::vector<std::pair<int, struct sigaction>> previous;
    int stopPipe[2] = {-1, -1};
    std::thread watcher;
    bool wasInterrupted = false;
};

} // namespace gaugewell
