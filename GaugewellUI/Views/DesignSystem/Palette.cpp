#include "Palette.h"

#include <array>

namespace gaugewell {

namespace {

struct ColorPair {
    float light[3];
    float dark[3];
};

constexpr std::array<ColorPair, 8> colors{{
    {{0.04f, 0.51f, 0.39f}, {0.26f, 0.83f, 0.65f}}, // codex base
    {{0.2f, 0.72f, 0.55f}, {0.52f, 0.94f, 0.79f}},  // codex highlight
    {{0.78f, 0.36f, 0.23f}, {0.94f, 0.56f, 0.4f}},  // claude base
    {{0.91f, 0.53f, 0.36f}, {1.0f, 0.72f, 0.56f}},  // claude highlight
    {{0.16f, 0.28f, 1.0f}, {0.42f, 0.52f, 1.0f}},   // accent blue
    {{0.36f, 0.46f, 1.0f}, {0.62f, 0.68f, 1.0f}},   // accent indigo
    {{0.83f, 0.55f, 0.08f}, {1.0f, 0.75f, 0.28f}},  // amber
    {{0.79f, 0.24f, 0.22f}, {1.0f, 0.45f, 0.42f}},  // red
}};

} // namespace

QColor designColor(DesignColor color, bool dark) {
    const auto& pair = colors[static_cast<std::size_t>(color)];
    const float* rgb = dark ? pair.dark : pair.light;
    return QColor::fromRgbF(rgb[0], rgb[1], rgb[2]);
}

bool isDark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightnessF() < 0.5;
}

ProviderPalette ProviderPalette::of(ProviderService service, bool dark) {
    if (service == ProviderService::claude) {
        return {designColor(DesignColor::claudeBase, dark), designColor(DesignColor::claudeHighlight, dark)};
    }
    return {designColor(DesignColor::codexBase, dark), designColor(DesignColor::codexHighlight, dark)};
}

QColor usageColor(ProviderService service, double usedFraction, bool dark) {
    if (usedFraction >= 0.9) {
        return designColor(DesignColor::red, dark);
    }
    if (usedFraction >= 0.75) {
        return designColor(DesignColor::amber, dark);
    }
    return ProviderPalette::of(service, dark).base;
}

} // namespace gaugewell
