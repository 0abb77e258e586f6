#pragma once

#include <QVariantAnimation>
#include <QWidget>

namespace gaugewell {

// Moves a shown share to `end`: animated, unless the desktop asks for reduced motion or nobody can see
// the widget, when it jumps there.
inline void moveShownShare(QVariantAnimation& animation, double& shown, double end, bool reduceMotion,
                           QWidget& widget) {
    animation.stop();
    if (reduceMotion || !widget.isVisible()) {
        shown = end;
        widget.update();
        return;
    }
    animation.setStartValue(shown);
    animation.setEndValue(end);
    animation.start();
}

} // namespace gaugewell
