#include "SymbolIcon.h"

#include <QFile>
#include <QPainter>
#include <QSvgRenderer>
#include <array>

namespace gaugewell {

namespace {

constexpr std::array<SymbolIconEntry, 23> table{{
    {"arrow.clockwise", "view-refresh", "refresh-cw"},
    {"battery.75", "battery-good", "battery-medium"},
    {"chart.xyaxis.line", "view-statistics", "chart-line"},
    {"checkmark.shield", "security-high", "shield-check"},
    {"chevron.left", "go-previous", "chevron-left"},
    {"clock", "", "clock"},
    {"clock.arrow.circlepath", "document-open-recent", "history"},
    {"exclamationmark.triangle", "dialog-warning", "triangle-alert"},
    {"exclamationmark.triangle.fill", "dialog-warning", "triangle-alert"},
    {"exclamationmark.octagon.fill", "dialog-error", "octagon-alert"},
    {"info.circle", "dialog-information", "info"},
    {"eye.slash", "view-hidden", "eye-off"},
    {"gauge.with.dots.needle.67percent", "", "gauge"},
    {"gearshape", "preferences-system", "settings"},
    {"hand.raised", "", "hand"},
    {"internaldrive.badge.xmark", "drive-harddisk", "hard-drive"},
    {"memorychip", "", "memory-stick"},
    {"person.crop.circle", "system-users", "circle-user"},
    {"person.crop.circle.badge.exclamationmark", "", "user-round-x"},
    {"menubar.rectangle", "", "panel-top"},
    {"power", "application-exit", "power"},
    {"stethoscope", "", "stethoscope"},
    {"text.badge.xmark", "", "file-x"},
}};

const SymbolIconEntry* entryFor(std::string_view symbol) {
    for (const auto& entry : table) {
        if (entry.symbol == symbol) {
            return &entry;
        }
    }
    return nullptr;
}

} // namespace

std::span<const SymbolIconEntry> symbolIconTable() {
    return table;
}

QPixmap fallbackSymbolPixmap(std::string_view symbol, const QColor& tint, int size, qreal devicePixelRatio) {
    const int pixels = qRound(size * devicePixelRatio);
    QPixmap image(pixels, pixels);
    image.fill(Qt::transparent);
    const auto* entry = entryFor(symbol);
    if (entry == nullptr) {
        return QPixmap();
    }
    QFile file(QStringLiteral(":/icons/%1.svg").arg(QString::fromUtf8(entry->fallback)));
    if (!file.open(QIODevice::ReadOnly)) {
        return QPixmap();
    }
    // The set draws with "currentColor", which Qt's SVG renderer reads as black: substitute the tint.
    QByteArray svg = file.readAll();
    svg.replace("currentColor", tint.name(QColor::HexRgb).toLatin1());
    QSvgRenderer renderer(svg);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(tint.alphaF());
    renderer.render(&painter, QRectF(0, 0, pixels, pixels));
    painter.end();
    image.setDevicePixelRatio(devicePixelRatio);
    return image;
}

QIcon symbolIcon(std::string_view symbol, const QColor& tint) {
    const auto* entry = entryFor(symbol);
    if (entry == nullptr) {
        return QIcon();
    }
    if (!entry->themeName.empty()) {
        const QIcon themed = QIcon::fromTheme(QString::fromUtf8(entry->themeName));
        if (!themed.isNull()) {
            return themed;
        }
    }
    QIcon icon;
    for (const int size : {16, 20, 24, 32}) {
        icon.addPixmap(fallbackSymbolPixmap(symbol, tint, size, 1.0));
        icon.addPixmap(fallbackSymbolPixmap(symbol, tint, size, 2.0));
    }
    return icon;
}

} // namespace gaugewell
