#pragma once

#include "SettingsPage.h"

#include <memory>

namespace gaugewell {

class UsageAppModel;
class UserDefaults;

// Accounts: each service's connection with its badge and button, and which services the menu bar
// shows, in what order.
class ProvidersSettingsView : public SettingsPage {
    Q_OBJECT

public:
    ProvidersSettingsView(UsageAppModel& model, std::shared_ptr<UserDefaults> defaults,
                          QWidget* parent = nullptr);
};

} // namespace gaugewell
