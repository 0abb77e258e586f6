#include "Typography.h"

#include <QPalette>

namespace gaugewell {

void applyTextStyle(QWidget* widget, TextStyle style) {
    QFont font = widget->font();
    switch (style) {
    case TextStyle::largeTitle:
        font.setPixelSize(22);
        font.setWeight(QFont::Bold);
        break;
    case TextStyle::title:
        font.setPixelSize(17);
        font.setWeight(QFont::DemiBold);
        break;
    case TextStyle::headline:
        font.setPixelSize(13);
        font.setWeight(QFont::DemiBold);
        break;
    case TextStyle::body:
        font.setPixelSize(13);
        break;
    case TextStyle::callout:
        font.setPixelSize(12);
        break;
    case TextStyle::caption:
        font.setPixelSize(11);
        break;
    }
    widget->setFont(font);
}

QLabel* makeLabel(const QString& text, TextStyle style, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    applyTextStyle(label, style);
    label->setTextFormat(Qt::PlainText);
    return label;
}

void makeSecondary(QWidget* widget) {
    // A role rather than a fixed colour, so that it follows a change of colour scheme.
    widget->setForegroundRole(QPalette::PlaceholderText);
}

} // namespace gaugewell
