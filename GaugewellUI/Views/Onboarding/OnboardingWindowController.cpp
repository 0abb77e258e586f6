#include "OnboardingWindowController.h"

#include "GaugewellUI/Support/Localizable.h"
#include "OnboardingView.h"
#include "Platform/SettingsKeys.h"

#include <QGuiApplication>
#include <QScreen>
#include <QVBoxLayout>

namespace gaugewell {

OnboardingWindowController::OnboardingWindowController(UsageAppModel& model,
                                                       std::shared_ptr<UserDefaults> defaults,
                                                       QObject* parent)
    : QObject(parent)
    , model(model)
    , defaults(std::move(defaults)) {}

OnboardingWindowController::~OnboardingWindowController() = default;

bool OnboardingWindowController::isCompleted() const {
    return defaults->boolValue(settingsKey::onboardingCompleted);
}

void OnboardingWindowController::showIfNeeded() {
    if (isCompleted()) {
        return;
    }
    if (!window_) {
        window_ = std::make_unique<QWidget>(nullptr, Qt::Window);
        window_->setObjectName(QStringLiteral("onboarding-window"));
        window_->setWindowTitle(Localizable::tr("Welcome to Gaugewell"));
        window_->setMinimumSize(560, 480);
        window_->resize(600, 520);
        auto* layout = new QVBoxLayout(window_.get());
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(new OnboardingView(
            model, [this] { complete(); }, window_.get()));
        if (QScreen* screen = QGuiApplication::primaryScreen()) {
            window_->move(screen->availableGeometry().center() - window_->rect().center());
        }
    }
    window_->show();
    window_->raise();
    window_->activateWindow();
}

void OnboardingWindowController::complete() {
    defaults->set(settingsKey::onboardingCompleted, true);
    if (window_) {
        window_->close();
    }
}

QWidget* OnboardingWindowController::window() const {
    return window_.get();
}

} // namespace gaugewell
