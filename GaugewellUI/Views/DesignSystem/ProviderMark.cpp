#include "ProviderMark.h"

#include "ProviderMarkImage.h"

#include <QPainter>

namespace gaugewell {

ProviderMark::ProviderMark(ProviderService service, int size, QWidget* parent)
    : QWidget(parent)
    , service(service)
    , markSize(size) {
    setFixedSize(size, size);
    setAccessibleName(QString::fromUtf8(displayName(service)));
}

void ProviderMark::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.drawPixmap(0, 0,
                       ProviderMarkImage::pixmap(service, markSize, palette().color(QPalette::WindowText),
                                                 devicePixelRatioF()));
}

} // namespace gaugewell
