#pragma once

#include <QLabel>
#include <QString>

namespace gaugewell {

// Text styles, in the desktop's own font at the sizes of the design (1 pt = 1 logical px).
enum class TextStyle { largeTitle, title, headline, body, callout, caption };

QLabel* makeLabel(const QString& text, TextStyle style, QWidget* parent = nullptr);
void applyTextStyle(QWidget* widget, TextStyle style);
// Secondary text: the text colour, softened, so that it stays legible on both schemes.
void makeSecondary(QWidget* widget);

} // namespace gaugewell
