#include "SymbolButton.h"

#include "SymbolIcon.h"

#include <QEvent>

namespace gaugewell {

SymbolButton::SymbolButton(std::string symbol, const QString& helpText, QWidget* parent)
    : QToolButton(parent)
    , symbol(std::move(symbol)) {
    setAutoRaise(true);
    setToolTip(helpText);
    setAccessibleName(helpText);
    setIconSize(QSize(16, 16));
    setFocusPolicy(Qt::StrongFocus);
    refreshIcon();
}

void SymbolButton::changeEvent(QEvent* event) {
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange) {
        refreshIcon();
    }
    QToolButton::changeEvent(event);
}

void SymbolButton::refreshIcon() {
    setIcon(symbolIcon(symbol, palette().color(QPalette::ButtonText)));
}

SymbolPushButton::SymbolPushButton(std::string symbol, const QString& title, QWidget* parent)
    : QPushButton(title, parent)
    , symbol(std::move(symbol)) {
    setAccessibleName(title);
    setIconSize(QSize(14, 14));
    refreshIcon();
}

void SymbolPushButton::changeEvent(QEvent* event) {
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange) {
        refreshIcon();
    }
    QPushButton::changeEvent(event);
}

void SymbolPushButton::refreshIcon() {
    setIcon(symbolIcon(symbol, palette().color(QPalette::ButtonText)));
}

} // namespace gaugewell
