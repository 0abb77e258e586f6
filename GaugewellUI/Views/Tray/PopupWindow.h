#pragma once

#include <QWidget>

namespace gaugewell {

// The frameless popup that holds the popover, placed at the tray icon (or the cursor) inside the
// screen, closed when it loses focus. Where a frameless popup cannot be placed (Wayland), a small
// ordinary window that closes when the application goes inactive.
class PopupWindow : public QWidget {
    Q_OBJECT

public:
    static constexpr QSize popupSize{360, 560};

    explicit PopupWindow(QWidget* content, QWidget* parent = nullptr);

    // `iconGeometry` may be empty: the tray gave none.
    void showAt(const QRect& iconGeometry, const QPoint& cursor);
    static bool framelessPopupsWork();

signals:
    void visibilityChanged(bool visible);

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
};

} // namespace gaugewell
