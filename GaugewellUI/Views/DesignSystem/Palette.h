#pragma once

#include "ProviderKit/Authentication/ProviderService.h"

#include <QColor>
#include <QPalette>

namespace gaugewell {

// The colours every window shares, each with a light and a dark value.
enum class DesignColor {
    codexBase,
    codexHighlight,
    claudeBase,
    claudeHighlight,
    accentBlue,
    accentIndigo,
    amber,
    red
};

QColor designColor(DesignColor color, bool dark);

// Dark values are used on a palette whose window colour is dark.
bool isDark(const QPalette& palette);

// A provider's two colours: meters and rings run from base to highlight.
struct ProviderPalette {
    QColor base;
    QColor highlight;

    static ProviderPalette of(ProviderService service, bool dark);
};

// How a used share reads at a glance: the provider's colour, amber from 75 %, red from 90 %.
QColor usageColor(ProviderService service, double usedFraction, bool dark);

} // namespace gaugewell
