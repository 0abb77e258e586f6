#pragma once

#include <QLabel>

namespace gaugewell {

class UsageWindowSample;

// A small capsule that says how fresh a figure is ("CACHED", "recent", "stale", "unknown");
// hidden for a live figure.
class FreshnessBadge : public QLabel {
    Q_OBJECT

public:
    explicit FreshnessBadge(QWidget* parent = nullptr);

    void setSample(const UsageWindowSample& sample);

protected:
    void paintEvent(QPaintEvent* event) override;
    QSize sizeHint() const override;
};

} // namespace gaugewell
