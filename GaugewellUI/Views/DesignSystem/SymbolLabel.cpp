#include "SymbolLabel.h"

#include "SymbolIcon.h"

#include <QEvent>

namespace gaugewell {

SymbolLabel::SymbolLabel(std::string symbol, int size, QWidget* parent)
    : QLabel(parent)
    , symbol(std::move(symbol))
    , size(size) {
    setFixedSize(size, size);
    refresh();
}

void SymbolLabel::setTint(const QColor& newTint) {
    tint = newTint;
    refresh();
}

void SymbolLabel::changeEvent(QEvent* event) {
    if (event->type() == QEvent::PaletteChange) {
        refresh();
    }
    QLabel::changeEvent(event);
}

void SymbolLabel::refresh() {
    const QColor color = tint.isValid() ? tint : palette().color(foregroundRole());
    setPixmap(symbolIcon(symbol, color).pixmap(QSize(size, size), devicePixelRatioF()));
}

} // namespace gaugewell
