#pragma once

#include <QLabel>
#include <string>

namespace gaugewell {

// A symbol drawn as a small image in a colour of the palette (the text colour unless given a role).
class SymbolLabel : public QLabel {
    Q_OBJECT

public:
    SymbolLabel(std::string symbol, int size, QWidget* parent = nullptr);
    void setTint(const QColor& tint);

protected:
    void changeEvent(QEvent* event) override;

private:
    void refresh();
    std::string symbol;
    int size;
    QColor tint;
};

} // namespace gaugewell
