#pragma once

#include "Platform/SettingsKeys.h"
#include "Platform/UserDefaults.h"

#include <QObject>
#include <functional>
#include <memory>
#include <string>

class QAbstractButton;
class QComboBox;
class QSpinBox;

namespace gaugewell {

// Ties one control to one user-defaults key: it shows the stored value (or the key's default),
// writes the key the moment the control changes, and follows changes made elsewhere (the tray,
// `gaugewell config`). Owned by the control.
class SettingBinding : public QObject {
    Q_OBJECT

public:
    // A switch over a Boolean key; a stored value counts only when it is a Boolean.
    static SettingBinding* toggle(QAbstractButton* control, std::shared_ptr<UserDefaults> defaults,
                                  std::string_view key);
    // A picker whose items carry the stored texts as their data; an unknown stored text selects nothing.
    static SettingBinding* choice(QComboBox* control, std::shared_ptr<UserDefaults> defaults,
                                  std::string_view key);
    // A stepper in minutes over a key stored in seconds, within the setting's range.
    static SettingBinding* minutes(QSpinBox* control, std::shared_ptr<UserDefaults> defaults,
                                   std::string_view key);

private:
    SettingBinding(QObject* control, std::shared_ptr<UserDefaults> defaults, std::string_view key,
                   std::function<void()> show);

    std::shared_ptr<UserDefaults> defaults;
    std::string key;
    std::function<void()> show;
    UserDefaults::Subscription subscription;
    bool writing = false;

    friend struct SettingBindingAccess;
};

} // namespace gaugewell
