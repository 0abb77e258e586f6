#pragma once

#include "ProviderKit/Authentication/ProviderService.h"

#include <QPushButton>

namespace gaugewell {

class UsageAppModel;

// Connects, disconnects or cancels a waiting sign-in for one service through the model (never
// blocking: the model runs it in the background), and follows the model's connection states.
class ProviderConnectionButton : public QPushButton {
    Q_OBJECT

public:
    ProviderConnectionButton(UsageAppModel& model, ProviderService service, bool compact = false,
                             QWidget* parent = nullptr);

private:
    void refresh();
    void activate();

    UsageAppModel& model;
    ProviderService service;
};

} // namespace gaugewell
