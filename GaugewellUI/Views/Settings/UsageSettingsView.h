#pragma once

#include "GaugewellUI/Desktop/ApplicationAction.h"
#include "GeneralSettingsView.h"
#include "UsagePresentation/ResetTimeFormatter.h"

#include <QWidget>
#include <memory>

class QListWidget;
class QStackedWidget;

namespace gaugewell {

class LoginItemController;
class UsageAppModel;
class UsageNotificationController;
class UserDefaults;

// The settings window's content: a sidebar with Accounts, Menu Bar and General, and the page.
class UsageSettingsView : public QWidget {
    Q_OBJECT

public:
    struct Services {
        UsageAppModel& model;
        UsageNotificationController& notifications;
        std::shared_ptr<UserDefaults> defaults;
        std::shared_ptr<const ResetTimeFormatter> resetTime;
        LoginItemController& loginItem;
        GeneralSettingsView::SaveLocationChooser chooseSaveLocation;
    };

    UsageSettingsView(Services services, SettingsDestination destination, QWidget* parent = nullptr);

    void setDestination(SettingsDestination destination);
    SettingsDestination destination() const;

private:
    QListWidget* sidebar;
    QStackedWidget* pages;
};

// The window that hosts it: made on first use, hidden on close and shown again on the page asked for.
class SettingsWindow : public QWidget {
    Q_OBJECT

public:
    SettingsWindow(UsageSettingsView::Services services, QWidget* parent = nullptr);

    void showPage(SettingsDestination destination);
    UsageSettingsView& view() { return *content; }

private:
    UsageSettingsView* content;
};

// The desktop's save dialog, proposing the name in the home folder.
QString chooseSaveLocationWithDialog(QWidget* parent, const QString& proposedName);

} // namespace gaugewell
