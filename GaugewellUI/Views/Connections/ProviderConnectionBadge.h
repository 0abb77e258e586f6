#pragma once

#include "ProviderKit/Authentication/ProviderService.h"

#include <QWidget>

class QLabel;

namespace gaugewell {

class UsageAppModel;

// A service's connection state as a coloured dot and its sentence ("ChatGPT account",
// "Claude sign-in required"), following the model.
class ProviderConnectionBadge : public QWidget {
    Q_OBJECT

public:
    ProviderConnectionBadge(UsageAppModel& model, ProviderService service, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void refresh();

    UsageAppModel& model;
    ProviderService service;
    QLabel* text;
    QColor dot;
};

} // namespace gaugewell
