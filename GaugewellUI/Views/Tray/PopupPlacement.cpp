#include "PopupPlacement.h"

#include <algorithm>

namespace gaugewell {

namespace {

constexpr int gap = 4;

int clampedCoordinate(int value, int low, int high) {
    // A popup larger than the screen keeps its top-left corner on screen.
    return std::max(low, std::min(value, high));
}

} // namespace

QPoint popupPosition(const QRect& iconGeometry, const QPoint& cursor, const QSize& popup,
                     const QRect& available) {
    const QRect anchor =
        iconGeometry.isValid() && !iconGeometry.isEmpty() ? iconGeometry : QRect(cursor, QSize(1, 1));
    QPoint origin;
    const int spaceBelow = available.bottom() - anchor.bottom();
    const int spaceAbove = anchor.top() - available.top();
    const int spaceLeft = anchor.left() - available.left();
    const int spaceRight = available.right() - anchor.right();
    const bool sidePanel = std::min(spaceLeft, spaceRight) < popup.width() / 4 &&
                           std::min(spaceAbove, spaceBelow) > popup.height() / 4;
    if (sidePanel) {
        origin.setX(spaceRight >= spaceLeft ? anchor.right() + gap : anchor.left() - gap - popup.width());
        origin.setY(anchor.center().y() - popup.height() / 2);
    } else {
        origin.setX(anchor.center().x() - popup.width() / 2);
        origin.setY(spaceBelow >= spaceAbove ? anchor.bottom() + gap : anchor.top() - gap - popup.height());
    }
    origin.setX(clampedCoordinate(origin.x(), available.left(), available.right() - popup.width() + 1));
    origin.setY(clampedCoordinate(origin.y(), available.top(), available.bottom() - popup.height() + 1));
    return origin;
}

} // namespace gaugewell
