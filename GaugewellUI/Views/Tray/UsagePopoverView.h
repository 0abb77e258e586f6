#pragma once

#include "GaugewellUI/Views/DesignSystem/CountdownTimeline.h"
#include "Platform/UserDefaults.h"
#include "UsagePresentation/RelativeTimeFormatter.h"

#include <QWidget>
#include <functional>
#include <memory>
#include <vector>

class QLabel;
class QVBoxLayout;

namespace gaugewell {

class CompactProviderCard;
class UsageAppModel;

// The popup's content: a header with the refresh state and button, one card per shown provider
// (or an empty state when both are hidden), and the footer's three buttons. It follows the model,
// the settings and the minute tick while it is shown.
class UsagePopoverView : public QWidget {
    Q_OBJECT

public:
    struct Actions {
        std::function<void()> openDashboard;
        std::function<void()> openSettings;
        std::function<void()> quit;
    };

    UsagePopoverView(
        UsageAppModel& model, std::shared_ptr<UserDefaults> defaults, Actions actions,
        std::function<Date()> clock = [] { return std::chrono::system_clock::now(); },
        QWidget* parent = nullptr);

    void refresh();

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    UsageAppModel& model;
    std::shared_ptr<UserDefaults> defaults;
    Actions actions;
    std::function<Date()> clock;
    CountdownTimeline timeline;
    RelativeTimeFormatter relativeTime;
    UserDefaults::Subscription settingsSubscription;

    QLabel* status;
    QWidget* refreshButton;
    QVBoxLayout* cardsLayout;
    std::vector<CompactProviderCard*> cards;
    QWidget* emptyState;
};

} // namespace gaugewell
