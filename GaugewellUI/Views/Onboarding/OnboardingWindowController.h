#pragma once

#include "Platform/UserDefaults.h"

#include <QObject>
#include <QPointer>
#include <memory>

class QWidget;

namespace gaugewell {

class OnboardingView;
class UsageAppModel;

// Shows the first-run window until onboarding has been finished ("onboarding.completed.v1").
// "Finish" and "Not now" complete it; closing the window does not, so it comes back next launch.
class OnboardingWindowController : public QObject {
    Q_OBJECT

public:
    OnboardingWindowController(UsageAppModel& model, std::shared_ptr<UserDefaults> defaults,
                               QObject* parent = nullptr);
    ~OnboardingWindowController() override;

    bool isCompleted() const;
    // Does nothing once completed; otherwise shows the window (made on first use).
    void showIfNeeded();
    void complete();
    QWidget* window() const;

private:
    UsageAppModel& model;
    std::shared_ptr<UserDefaults> defaults;
    std::unique_ptr<QWidget> window_;
};

} // namespace gaugewell
