#include "ProviderMarkImage.h"

#include <QFile>
#include <QPainter>
#include <QSvgRenderer>
#include <map>
#include <memory>
#include <mutex>

namespace gaugewell {

namespace {

std::mutex cacheMutex;
// Keyed by prefix and service; renderers live as long as the process.
std::map<std::pair<QString, ProviderService>, std::unique_ptr<QSvgRenderer>>& cache() {
    static std::map<std::pair<QString, ProviderService>, std::unique_ptr<QSvgRenderer>> renderers;
    return renderers;
}

QString resourceName(ProviderService service) {
    return service == ProviderService::claude ? QStringLiteral("ClaudeMarkTemplate")
                                              : QStringLiteral("CodexMarkTemplate");
}

} // namespace

const QSvgRenderer* ProviderMarkImage::renderer(ProviderService service) {
    return renderer(service, QStringLiteral(":/marks/"));
}

const QSvgRenderer* ProviderMarkImage::renderer(ProviderService service, const QString& resourcePrefix) {
    const std::lock_guard lock(cacheMutex);
    auto& renderers = cache();
    const auto key = std::make_pair(resourcePrefix, service);
    if (const auto found = renderers.find(key); found != renderers.end()) {
        return found->second.get();
    }
    QFile file(resourcePrefix + resourceName(service) + QStringLiteral(".svg"));
    if (!file.open(QIODevice::ReadOnly)) {
        return nullptr;
    }
    auto loaded = std::make_unique<QSvgRenderer>(file.readAll());
    if (!loaded->isValid()) {
        return nullptr;
    }
    return renderers.emplace(key, std::move(loaded)).first->second.get();
}

QPixmap ProviderMarkImage::pixmap(ProviderService service, int size, const QColor& tint,
                                  qreal devicePixelRatio) {
    const QSvgRenderer* mark = renderer(service);
    const int pixels = qRound(size * devicePixelRatio);
    QPixmap image(pixels, pixels);
    image.fill(Qt::transparent);
    if (mark == nullptr) {
        return image;
    }
    {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        // QSvgRenderer is not re-entrant; the cache lock also guards drawing.
        const std::lock_guard lock(cacheMutex);
        const_cast<QSvgRenderer*>(mark)->render(&painter, QRectF(0, 0, pixels, pixels));
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(image.rect(), tint);
    }
    image.setDevicePixelRatio(devicePixelRatio);
    return image;
}

} // namespace gaugewell
