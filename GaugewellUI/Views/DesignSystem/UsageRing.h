#pragma once

#include "ProviderKit/Authentication/ProviderService.h"

#include <QVariantAnimation>
#include <QWidget>
#include <optional>

namespace gaugewell {

// A used share as a ring in the provider's colours, with the percentage and a caption inside.
// Its accessible value reads "42 percent Session", or "Usage unavailable" without a share.
class UsageRing : public QWidget {
    Q_OBJECT

public:
    UsageRing(ProviderService service, int diameter = 72, int lineWidth = 8, QWidget* parent = nullptr);

    // `percent` is the whole percentage to print (already rounded by the caller).
    void setValue(std::optional<double> fraction, std::optional<int> percent, const QString& caption);
    void setReduceMotion(bool reduce) { reduceMotion = reduce; }

    QSize sizeHint() const override { return {diameter, diameter}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    ProviderService service;
    int diameter;
    int lineWidth;
    std::optional<double> fraction;
    std::optional<int> percent;
    QString caption;
    double shown = 0;
    bool reduceMotion = false;
    QVariantAnimation animation;
};

} // namespace gaugewell
