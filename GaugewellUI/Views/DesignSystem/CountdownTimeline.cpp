#include "CountdownTimeline.h"

namespace gaugewell {

CountdownTimeline::CountdownTimeline(std::function<Date()> clock, QObject* parent)
    : QObject(parent)
    , clock(std::move(clock))
    , current(this->clock()) {
    ticker.setInterval(std::chrono::seconds(60));
    ticker.setTimerType(Qt::CoarseTimer);
    connect(&ticker, &QTimer::timeout, this, [this] {
        current = this->clock();
        emit ticked(current);
    });
}

void CountdownTimeline::setActive(bool active) {
    if (active == ticker.isActive()) {
        return;
    }
    if (active) {
        current = clock();
        ticker.start();
        emit ticked(current);
    } else {
        ticker.stop();
    }
}

} // namespace gaugewell
