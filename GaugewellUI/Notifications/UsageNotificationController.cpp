#include "UsageNotificationController.h"

#include "GaugewellUI/Support/BackgroundWork.h"
#include "Platform/SettingsKeys.h"
#include "UsageNotificationContent.h"

#include <QPromise>
#include <utility>

namespace gaugewell {

namespace {

UsageNotificationPermission permissionFor(NotificationAuthorization authorization) {
    switch (authorization) {
    case NotificationAuthorization::unavailable:
        return UsageNotificationPermission::unavailable;
    case NotificationAuthorization::notDetermined:
        return UsageNotificationPermission::notRequested;
    case NotificationAuthorization::authorized:
        return UsageNotificationPermission::allowed;
    case NotificationAuthorization::denied:
        break;
    }
    return UsageNotificationPermission::denied;
}

std::shared_ptr<QPromise<void>> startedPromise() {
    auto promise = std::make_shared<QPromise<void>>();
    promise->start();
    return promise;
}

QFuture<void> finishedFuture() {
    QPromise<void> promise;
    promise.start();
    promise.finish();
    return promise.future();
}

std::vector<UsageAlertSample> alertSamples(const std::vector<ProviderViewState>& providers) {
    std::vector<UsageAlertSample> samples;
    for (const auto& provider : providers) {
        for (const auto& window : provider.currentWindows()) {
            if (!window.usedFraction()) {
                continue;
            }
            samples.push_back(UsageAlertSample{provider.descriptor.id(), provider.descriptor.displayName(),
                                               window.providerBucketID(), alertWindowName(window),
                                               window.usedFraction()->toDouble(), window.resetAt()});
        }
    }
    return samples;
}

} // namespace

UsageNotificationController::UsageNotificationController(std::shared_ptr<NotificationBackend> backend,
                                                         std::shared_ptr<UserDefaults> defaults,
                                                         QObject* parent)
    : QObject(parent)
    , backend(std::move(backend))
    , defaults(std::move(defaults))
    , permission_(this->backend ? UsageNotificationPermission::notRequested
                                : UsageNotificationPermission::unavailable) {}

QFuture<void> UsageNotificationController::refreshPermission() {
    return refreshPermission(true);
}

QFuture<void> UsageNotificationController::refreshPermission(bool mayRequest) {
    if (!backend) {
        setPermission(UsageNotificationPermission::unavailable);
        return finishedFuture();
    }
    auto done = startedPromise();
    continueOn(this, backend->authorization(),
               [this, done, mayRequest](NotificationAuthorization authorization) {
                   const auto permission = permissionFor(authorization);
                   // A desktop notification service has no consent of its own to remember between launches:
                   // alerts switched on in an earlier run stand for the consent given then.
                   if (mayRequest && permission == UsageNotificationPermission::notRequested &&
                       defaults->boolValue(settingsKey::notificationsEnabled)) {
                       continueOn(this, requestPermission(), [done] { done->finish(); });
                       return;
                   }
                   setPermission(permission);
                   done->finish();
               });
    return done->future();
}

QFuture<void> UsageNotificationController::requestPermission() {
    if (!backend) {
        setPermission(UsageNotificationPermission::unavailable);
        return finishedFuture();
    }
    auto done = startedPromise();
    continueOn(this, backend->requestAuthorization(), [this, done](NotificationAuthorization) {
        continueOn(this, refreshPermission(false), [done] { done->finish(); });
    });
    return done->future();
}

QFuture<void> UsageNotificationController::process(const std::vector<ProviderViewState>& providers) {
    const bool enabled = defaults->boolValue(settingsKey::notificationsEnabled);
    std::vector<double> thresholds;
    const std::pair<std::string_view, double> thresholdKeys[] = {{settingsKey::threshold50, 0.5},
                                                                 {settingsKey::threshold75, 0.75},
                                                                 {settingsKey::threshold90, 0.9},
                                                                 {settingsKey::threshold95, 0.95}};
    for (const auto& [key, fraction] : thresholdKeys) {
        if (defaults->storedBool(key).value_or(true)) {
            thresholds.push_back(fraction);
        }
    }
    const bool notifiesOnReset = defaults->storedBool(settingsKey::windowReset).value_or(false);

    const auto events = evaluator_.evaluate(alertSamples(providers), enabled, thresholds, notifiesOnReset);
    if (!enabled || permission_ != UsageNotificationPermission::allowed || events.empty() || !backend) {
        return finishedFuture();
    }
    auto requests = std::make_shared<std::vector<NotificationRequest>>();
    for (const auto& event : events) {
        requests->push_back(usageNotificationRequest(event));
    }
    auto done = startedPromise();
    postInOrder(std::move(requests), 0, done);
    return done->future();
}

void UsageNotificationController::postInOrder(std::shared_ptr<std::vector<NotificationRequest>> requests,
                                              std::size_t index, std::shared_ptr<QPromise<void>> done) {
    if (index >= requests->size()) {
        done->finish();
        return;
    }
    // A refused request does not hold back the rest; the evaluation has already moved on.
    continueOn(this, backend->post((*requests)[index]),
               [this, requests, index, done](const std::optional<NotificationPostError>&) {
                   postInOrder(requests, index + 1, done);
               });
}

void UsageNotificationController::setPermission(UsageNotificationPermission permission) {
    if (permission_ != permission) {
        permission_ = permission;
        emit permissionChanged();
    }
}

} // namespace gaugewell
