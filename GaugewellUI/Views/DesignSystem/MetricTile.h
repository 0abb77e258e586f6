#pragma once

#include "GlassSurface.h"

#include <QColor>
#include <optional>

class QLabel;

namespace gaugewell {

// One figure with its label and an optional detail line, on a small glass panel; `emphasis` makes
// the figure large, `tint` colours it.
class MetricTile : public GlassSurface {
    Q_OBJECT

public:
    MetricTile(const QString& label, QWidget* parent = nullptr);

    void setValue(const QString& value, const std::optional<QString>& detail = std::nullopt);
    void setEmphasis(bool emphasis);
    void setValueTint(std::optional<QColor> tint);

private:
    QLabel* label;
    QLabel* value;
    QLabel* detail;
};

} // namespace gaugewell
