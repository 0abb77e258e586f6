#pragma once

#include "GaugewellUI/Support/SuspendAwareTimer.h"
#include "Platform/UserDefaults.h"
#include "ProviderKit/Authentication/ProviderAuthenticating.h"
#include "ProviderStateAssembler.h"
#include "ProviderViewState.h"
#include "UsageCoordinator/RefreshCoordinator.h"
#include "UsagePresentation/ProviderMenuSnapshot.h"

#include <QFuture>
#include <QObject>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace gaugewell {

// The one object the interface reads: it refreshes (at start, whenever the configured interval has
// passed, on demand), signs in and out, and publishes one view state per service
// and the daily token history. Lives on the main thread; blocking work runs on threads of its
// own and continues here.
class UsageAppModel : public QObject {
    Q_OBJECT

public:
    // What runs around refreshes without the model knowing it (the notification permission before
    // the first, the usage alerts after each): awaited in turn. Both optional.
    struct RefreshHooks {
        std::function<QFuture<void>()> beforeFirstRefresh;
        std::function<QFuture<void>(const std::vector<ProviderViewState>&)> afterPublish;
    };
    struct Dependencies {
        std::shared_ptr<ProviderAuthenticating> authentication;
        PerService<std::shared_ptr<const GaugewellProvider>> collectors;
        std::shared_ptr<UserDefaults> defaults;
        RefreshHooks hooks{};
        std::function<Date()> now = [] { return std::chrono::system_clock::now(); };
        // The longest the model sleeps without looking whether a refresh is due: a timer is armed for
        // the moment the interval runs out, and this bounds it against clock changes.
        std::chrono::milliseconds maximumSleep{std::chrono::hours(1)};
        RefreshBackoffPolicy backoffPolicy{30, 1800};
    };
    // Called when no refresh runs any more; false when the model went away first.
    using RefreshWaiter = std::function<void(bool refreshed)>;

    explicit UsageAppModel(Dependencies dependencies, QObject* parent = nullptr);
    ~UsageAppModel() override;

    const std::vector<ProviderViewState>& providers() const { return providers_; }
    const std::vector<HistoryPoint>& historyPoints() const { return historyPoints_; }
    // "Checking sign-in" until the first answer.
    ProviderConnectionState connectionState(ProviderService service) const;
    const std::map<ProviderService, ProviderConnectionState>& connectionStates() const {
        return connectionStates_;
    }
    bool isRefreshing() const { return refreshesRunning > 0; }
    std::optional<ProviderService> authenticationAction() const { return authenticationAction_; }
    std::optional<Date> lastUpdatedAt() const { return lastUpdatedAt_; }
    std::vector<ProviderMenuSnapshot> menuSnapshots() const;

    // Whether the user is looking (popover or a window open): refreshes come more often then.
    bool isInteractive() const { return interactive; }
    void setInteractive(bool value);
    // The automatic refresh interval now, from "advanced.refreshActiveSeconds" or
    // "advanced.refreshIdleSeconds": never below 120 s.
    std::chrono::seconds refreshInterval() const;

    // Once: the notification permission, a manual refresh, then a refresh whenever one is due.
    void start();
    QFuture<void> refresh(RefreshTrigger trigger);
    QFuture<void> refreshIfDue();
    // Sign-in and sign-out, one at a time; a second request while one runs is ignored.
    QFuture<void> connectService(ProviderService service);
    QFuture<void> disconnectService(ProviderService service);
    // Ends a sign-in that waits for the browser; it then reports `failed`. Returns at once.
    void cancelSignIn();
    // Calls `waiter` at once when the last refresh is younger than `maximumAge` and none runs;
    // otherwise after the running refresh, or after a scheduled one, which leaves providers that
    // are backing off alone.
    void afterRecentRefresh(std::chrono::seconds maximumAge, RefreshWaiter waiter);
    Date now() const { return dependencies.now(); }

signals:
    void providersChanged();
    void connectionStatesChanged();
    void refreshingChanged();
    void authenticationActionChanged();

private:
    struct CollectedRefresh {
        RefreshSummary summary;
        std::vector<ProviderStateAssembler::SkippedProvider> skipped;
    };

    void publish(const CollectedRefresh& collected);
    void finishRefresh();
    void setAuthenticationAction(std::optional<ProviderService> service);
    void setConnectionState(const ProviderConnectionState& state);
    void rederive();
    // Arms the timer for the moment the next scheduled refresh is due.
    void scheduleNextRefresh();

    Dependencies dependencies;
    std::shared_ptr<RefreshCoordinator> coordinator;
    SuspendAwareTimer refreshTimer;
    UserDefaults::Subscription intervalSettings;
    bool didStart = false;
    bool interactive = false;
    int refreshesRunning = 0;
    std::vector<RefreshWaiter> waiters;

    std::vector<ProviderViewState> providers_;
    std::vector<HistoryPoint> historyPoints_;
    std::map<ProviderService, ProviderConnectionState> connectionStates_;
    std::optional<ProviderService> authenticationAction_;
    std::optional<Date> lastUpdatedAt_;
};

} // namespace gaugewell
