#pragma once

#include <QColor>
#include <QIcon>
#include <QString>
#include <span>
#include <string_view>

namespace gaugewell {

// One row per symbol the windows use: the desktop icon theme's name (freedesktop icon naming, so
// Breeze or Adwaita draw it) and a bundled monochrome fallback. An empty theme name means the
// themes have nothing that fits and the fallback is always used.
struct SymbolIconEntry {
    std::string_view symbol;
    std::string_view themeName;
    std::string_view fallback; // resource ":/icons/<fallback>.svg"
};

std::span<const SymbolIconEntry> symbolIconTable();

// The theme's icon for a symbol, else the fallback drawn in `tint`; a null icon for an unknown name.
QIcon symbolIcon(std::string_view symbol, const QColor& tint);

// The bundled fallback alone, drawn in `tint` at `size` logical pixels.
QPixmap fallbackSymbolPixmap(std::string_view symbol, const QColor& tint, int size, qreal devicePixelRatio);

} // namespace gaugewell
