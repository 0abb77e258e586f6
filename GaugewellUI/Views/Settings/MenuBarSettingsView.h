#pragma once

#include "Platform/UserDefaults.h"
#include "SettingsPage.h"
#include "UsagePresentation/ResetTimeFormatter.h"

#include <memory>

namespace gaugewell {

class MenuBarPreview;
class UsageAppModel;

// Menu Bar: what the tray shows (percentage, used or remaining, reset time, density, which window)
// with a live preview that follows every change.
class MenuBarSettingsView : public SettingsPage {
    Q_OBJECT

public:
    MenuBarSettingsView(UsageAppModel& model, std::shared_ptr<UserDefaults> defaults,
                        std::shared_ptr<const ResetTimeFormatter> resetTime, QWidget* parent = nullptr);

    void refreshPreview();

private:
    UsageAppModel& model;
    std::shared_ptr<UserDefaults> defaults;
    std::shared_ptr<const ResetTimeFormatter> resetTime;
    UserDefaults::Subscription subscription;
    MenuBarPreview* preview;
};

} // namespace gaugewell
