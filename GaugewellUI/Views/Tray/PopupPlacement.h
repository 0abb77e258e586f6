#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

namespace gaugewell {

// Where the popup's top-left corner goes: centred under the tray icon when the panel is at the top
// of the screen, above it when the panel is at the bottom (beside it for side panels), or at the
// cursor when the tray reports no geometry; always inside the screen's available area.
QPoint popupPosition(const QRect& iconGeometry, const QPoint& cursor, const QSize& popup,
                     const QRect& available);

} // namespace gaugewell
