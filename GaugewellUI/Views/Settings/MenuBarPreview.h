#pragma once

#include "UsagePresentation/MenuBarProjection.h"

#include <QImage>
#include <QWidget>

namespace gaugewell {

// The projection drawn the way a panel shows it: the tray icon, then each provider's mark and
// text, on a dark strip beside a decorative battery. Its accessible name reads the spoken label.
class MenuBarPreview : public QWidget {
    Q_OBJECT

public:
    explicit MenuBarPreview(QWidget* parent = nullptr);

    void setProjection(const MenuBarProjection& projection, const QImage& trayIcon);

    QSize sizeHint() const override { return {420, 34}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    MenuBarProjection projection;
    QImage trayIcon;
};

} // namespace gaugewell
