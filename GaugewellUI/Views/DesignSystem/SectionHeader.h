#pragma once

#include <QWidget>

class QLabel;

namespace gaugewell {

// A section's title with a secondary subtitle under it.
class SectionHeader : public QWidget {
    Q_OBJECT

public:
    SectionHeader(const QString& title, const QString& subtitle, QWidget* parent = nullptr);

private:
    QLabel* title;
    QLabel* subtitle;
};

} // namespace gaugewell
