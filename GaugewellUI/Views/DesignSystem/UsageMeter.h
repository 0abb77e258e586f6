#pragma once

#include "ProviderKit/Authentication/ProviderService.h"

#include <QVariantAnimation>
#include <QWidget>
#include <optional>

namespace gaugewell {

// A used share as a rounded bar in the provider's colours; an empty track when the share is not
// known. Shares above 100 % fill the bar and no more.
class UsageMeter : public QWidget {
    Q_OBJECT

public:
    UsageMeter(ProviderService service, int height = 6, QWidget* parent = nullptr);

    void setFraction(std::optional<double> fraction);
    std::optional<double> fraction() const { return target; }
    void setReduceMotion(bool reduce) { reduceMotion = reduce; }

    QSize sizeHint() const override { return {120, barHeight}; }
    QSize minimumSizeHint() const override { return {24, barHeight}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    ProviderService service;
    int barHeight;
    std::optional<double> target;
    double shown = 0;
    bool reduceMotion = false;
    QVariantAnimation animation;
};

} // namespace gaugewell
