#include "SuspendAwareTimer.h"

#include <QSocketNotifier>
#include <QTimer>
#include <algorithm>
#include <cstdint>
#include <sys/timerfd.h>
#include <unistd.h>

namespace gaugewell {

SuspendAwareTimer::SuspendAwareTimer(QObject* parent)
    : QObject(parent)
    , descriptor(::timerfd_create(CLOCK_BOOTTIME, TFD_CLOEXEC | TFD_NONBLOCK)) {
    if (descriptor >= 0) {
        notifier = new QSocketNotifier(descriptor, QSocketNotifier::Read, this);
        notifier->setEnabled(false);
        connect(notifier, &QSocketNotifier::activated, this, [this] {
            std::uint64_t expirations = 0;
            if (::read(descriptor, &expirations, sizeof expirations) == sizeof expirations) {
                fire();
            }
        });
    } else {
        fallback = new QTimer(this);
        fallback->setSingleShot(true);
        connect(fallback, &QTimer::timeout, this, &SuspendAwareTimer::fire);
    }
}

SuspendAwareTimer::~SuspendAwareTimer() {
    if (descriptor >= 0) {
        delete notifier;
        ::close(descriptor);
    }
}

void SuspendAwareTimer::start(std::chrono::milliseconds delay) {
    active = true;
    if (descriptor < 0) {
        fallback->start(std::max(delay, std::chrono::milliseconds(0)));
        return;
    }
    // An all-zero value would disarm the timer: the shortest wait is a nanosecond.
    const auto wait = std::max<std::chrono::nanoseconds>(delay, std::chrono::nanoseconds(1));
    itimerspec value{};
    value.it_value.tv_sec =
        static_cast<time_t>(std::chrono::duration_cast<std::chrono::seconds>(wait).count());
    value.it_value.tv_nsec = static_cast<long>((wait % std::chrono::seconds(1)).count());
    ::timerfd_settime(descriptor, 0, &value, nullptr);
    notifier->setEnabled(true);
}

void SuspendAwareTimer::stop() {
    active = false;
    if (descriptor < 0) {
        fallback->stop();
        return;
    }
    const itimerspec disarmed{};
    ::timerfd_settime(descriptor, 0, &disarmed, nullptr);
    notifier->setEnabled(false);
}

void SuspendAwareTimer::fire() {
    active = false;
    if (notifier != nullptr) {
        notifier->setEnabled(false);
    }
    emit timeout();
}

} // namespace gaugewell
