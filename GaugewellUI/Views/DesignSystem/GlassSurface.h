#pragma once

#include <QColor>
#include <QFrame>
#include <optional>

namespace gaugewell {

// A rounded panel with a translucent fill and a hairline border over the window background, the
// surface every card and section sits on. Opaque when the user asks for less transparency.
// Lay out children in it as in any QFrame.
class GlassSurface : public QFrame {
    Q_OBJECT

public:
    explicit GlassSurface(QWidget* parent = nullptr, int cornerRadius = 12);

    void setTint(std::optional<QColor> tint);
    void setInteractive(bool interactive);
    void setReduceTransparency(bool reduce);

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    int cornerRadius;
    std::optional<QColor> tint;
    bool interactive = false;
    bool hovered = false;
    bool reduceTransparency = false;
};

} // namespace gaugewell
