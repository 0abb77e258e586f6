#pragma once

#include "SettingsPage.h"

#include <QString>
#include <functional>
#include <memory>
#include <optional>

class QLabel;
class QVBoxLayout;

namespace gaugewell {

class LoginItemController;
class SettingsToggleRow;
class UsageAppModel;
class UsageNotificationController;
class UserDefaults;

// General: launch at login, the refresh intervals, notifications, diagnostics with the export of
// a sanitised report, privacy and about.
class GeneralSettingsView : public SettingsPage {
    Q_OBJECT

public:
    // Asks where to save the report; empty for "cancelled". Tests answer it without a dialog.
    using SaveLocationChooser = std::function<QString(QWidget* parent, const QString& proposedName)>;

    GeneralSettingsView(UsageAppModel& model, UsageNotificationController& notifications,
                        std::shared_ptr<UserDefaults> defaults, LoginItemController& loginItem,
                        SaveLocationChooser chooseSaveLocation, QWidget* parent = nullptr);

    void exportDiagnostics();
    std::optional<QString> exportStatus() const;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void refreshDiagnostics();
    void refreshLoginItem();

    UsageAppModel& model;
    UsageNotificationController& notifications;
    LoginItemController& loginItem;
    SaveLocationChooser chooseSaveLocation;
    SettingsToggleRow* launchAtLogin;
    QLabel* permission;
    QVBoxLayout* diagnosticsRows;
    QWidget* diagnosticsList;
    QLabel* exportStatusLabel;
};

} // namespace gaugewell
