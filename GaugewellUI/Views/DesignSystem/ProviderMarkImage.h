#pragma once

#include "ProviderKit/Authentication/ProviderService.h"

#include <QColor>
#include <QPixmap>
#include <optional>

class QSvgRenderer;

namespace gaugewell {

// The two provider marks ("CodexMarkTemplate", "ClaudeMarkTemplate"): monochrome templates drawn in
// whatever colour the caller gives. Loaded once per process into a cache that any thread may use.
class ProviderMarkImage {
public:
    // The mark's vector image; null when the resource is missing (nothing is cached then).
    static const QSvgRenderer* renderer(ProviderService service);
    // The mark drawn at `size` logical pixels in `tint`, crisp at `devicePixelRatio`.
    static QPixmap pixmap(ProviderService service, int size, const QColor& tint, qreal devicePixelRatio);

    // For tests: load through another resource prefix.
    static const QSvgRenderer* renderer(ProviderService service, const QString& resourcePrefix);
};

} // namespace gaugewell
