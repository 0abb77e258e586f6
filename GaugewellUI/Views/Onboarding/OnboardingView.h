#pragma once

#include <QWidget>
#include <functional>

class QLabel;
class QStackedWidget;

namespace gaugewell {

class UsageAppModel;

// The first-run window's two steps: what Gaugewell reads, then connecting the two accounts.
class OnboardingView : public QWidget {
    Q_OBJECT

public:
    OnboardingView(UsageAppModel& model, std::function<void()> onComplete, QWidget* parent = nullptr);

    int step() const;
    void setStep(int step);

private:
    void refreshStatus();

    UsageAppModel& model;
    std::function<void()> onComplete;
    QStackedWidget* steps;
    QLabel* status;
};

// "Both accounts connected", "1 account connected", or "You can finish without connecting".
QString onboardingStatusLine(int connectedAccounts);

} // namespace gaugewell
