#pragma once

#include "GaugewellUI/Model/ProviderViewState.h"
#include "NotificationBackend.h"
#include "Platform/UserDefaults.h"
#include "UsageAlertEvaluator.h"
#include "UsageDomain/RawValue.h"

#include <QFuture>
#include <QObject>
#include <memory>
#include <vector>

namespace gaugewell {

enum class UsageNotificationPermission { unavailable, notRequested, denied, allowed };

template <> struct RawValues<UsageNotificationPermission> {
    static constexpr std::array<std::string_view, 4> names{"unavailable", "notRequested", "denied",
                                                           "allowed"};
};

// Turns each refresh's view states into threshold and reset alerts and posts them. Lives on the
// main thread; every operation returns at once and finishes through the event loop.
class UsageNotificationController : public QObject {
    Q_OBJECT

public:
    // Without a backend, permission is `unavailable` for good.
    UsageNotificationController(std::shared_ptr<NotificationBackend> backend,
                                std::shared_ptr<UserDefaults> defaults, QObject* parent = nullptr);

    UsageNotificationPermission permission() const { return permission_; }
    const UsageAlertEvaluator& evaluator() const { return evaluator_; }

    // Re-reads what the notification service allows.
    QFuture<void> refreshPermission();
    // Called when the user switches alerts on.
    QFuture<void> requestPermission();
    // After each refresh: evaluates every current window with a used fraction and, when alerts are
    // on and allowed, posts one notification per event in order, each after the previous one.
    QFuture<void> process(const std::vector<ProviderViewState>& providers);

signals:
    void permissionChanged();

private:
    QFuture<void> refreshPermission(bool mayRequest);
    void setPermission(UsageNotificationPermission permission);
    void postInOrder(std::shared_ptr<std::vector<NotificationRequest>> requests, std::size_t index,
                     std::shared_ptr<QPromise<void>> done);

    std::shared_ptr<NotificationBackend> backend;
    std::shared_ptr<UserDefaults> defaults;
    UsageNotificationPermission permission_;
    UsageAlertEvaluator evaluator_;
};

} // namespace gaugewell
