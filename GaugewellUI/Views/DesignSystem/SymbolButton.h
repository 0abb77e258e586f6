#pragma once

#include <QPushButton>
#include <QToolButton>
#include <string>

namespace gaugewell {

// A flat icon button for a symbol; its help text is also its tooltip and accessible name. The
// icon follows the text colour when the colour scheme changes.
class SymbolButton : public QToolButton {
    Q_OBJECT

public:
    SymbolButton(std::string symbol, const QString& helpText, QWidget* parent = nullptr);

protected:
    void changeEvent(QEvent* event) override;

private:
    void refreshIcon();
    std::string symbol;
};

// A push button with a title and a leading symbol (footer and form buttons).
class SymbolPushButton : public QPushButton {
    Q_OBJECT

public:
    SymbolPushButton(std::string symbol, const QString& title, QWidget* parent = nullptr);

protected:
    void changeEvent(QEvent* event) override;

private:
    void refreshIcon();
    std::string symbol;
};

} // namespace gaugewell
