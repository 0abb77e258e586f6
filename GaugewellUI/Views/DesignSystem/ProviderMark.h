#pragma once

#include "ProviderKit/Authentication/ProviderService.h"

#include <QWidget>

namespace gaugewell {

// A provider's mark, drawn like a template image in the widget's text colour.
class ProviderMark : public QWidget {
    Q_OBJECT

public:
    ProviderMark(ProviderService service, int size, QWidget* parent = nullptr);

    QSize sizeHint() const override { return {markSize, markSize}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    ProviderService service;
    int markSize;
};

} // namespace gaugewell
