#pragma once

#include "UsageDomain/Date.h"

#include <QObject>
#include <QTimer>
#include <functional>

namespace gaugewell {

// Re-publishes "now" once a minute, so that every countdown in a window moves together from one
// timer. Views connect to `ticked` and recompute their texts from `now()`.
class CountdownTimeline : public QObject {
    Q_OBJECT

public:
    explicit CountdownTimeline(
        std::function<Date()> clock = [] { return std::chrono::system_clock::now(); },
        QObject* parent = nullptr);

    Date now() const { return current; }
    // Ticks only while something is shown; a hidden window costs no wake-ups.
    void setActive(bool active);

signals:
    void ticked(gaugewell::Date now);

private:
    std::function<Date()> clock;
    Date current;
    QTimer ticker;
};

} // namespace gaugewell
