#pragma once

#include <QObject>
#include <chrono>

class QSocketNotifier;
class QTimer;

namespace gaugewell {

// A single-shot timer whose time also runs while the computer sleeps: one armed for ten minutes
// that sleeps through them fires as soon as the computer wakes, where a QTimer (monotonic time,
// which stops during suspend) would still wait out the rest. Linux timerfd on CLOCK_BOOTTIME; a
// plain QTimer where that is unavailable.
class SuspendAwareTimer : public QObject {
    Q_OBJECT

public:
    explicit SuspendAwareTimer(QObject* parent = nullptr);
    ~SuspendAwareTimer() override;

    // (Re)arms the timer; a delay of zero or less fires on the next turn of the event loop.
    void start(std::chrono::milliseconds delay);
    void stop();
    bool isActive() const { return active; }

signals:
    void timeout();

private:
    void fire();

    int descriptor = -1;
    QSocketNotifier* notifier = nullptr;
    QTimer* fallback = nullptr; // when there is no timerfd
    bool active = false;
};

} // namespace gaugewell
