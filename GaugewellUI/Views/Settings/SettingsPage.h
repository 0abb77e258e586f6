#pragma once

#include <QScrollArea>

class QCheckBox;
class QLabel;
class QVBoxLayout;

namespace gaugewell {

// A settings page: its title and subtitle, then its panels, scrolling when the window is short.
class SettingsPage : public QScrollArea {
    Q_OBJECT

public:
    SettingsPage(const QString& title, const QString& subtitle, QWidget* parent = nullptr);

    // A glass panel under a section title; lay the section's rows into the returned layout.
    QVBoxLayout* addSection(const QString& title, const char* symbol = nullptr);
    // The same, folded until its disclosure button is pressed.
    QVBoxLayout* addCollapsibleSection(const QString& title, const char* symbol, const QString& objectName);
    // Something outside a panel (a note under the panels).
    void addWidget(QWidget* widget);
    void finish();

private:
    QWidget* body;
    QVBoxLayout* layout;
};

// A labelled switch with an optional detail line under it; the label is also the accessible name.
class SettingsToggleRow : public QWidget {
    Q_OBJECT

public:
    SettingsToggleRow(const QString& title, const QString& detail = QString(), QWidget* parent = nullptr);

    QCheckBox* toggle() const { return box; }
    void setDetail(const QString& detail);

private:
    QCheckBox* box;
    QLabel* detailLabel;
};

// A row with a label on the left and a control on the right.
QWidget* labelledRow(const QString& label, QWidget* control, QWidget* parent);

} // namespace gaugewell
