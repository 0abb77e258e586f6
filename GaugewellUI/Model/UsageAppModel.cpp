#include "UsageAppModel.h"

#include "AuthenticationGatedProvider.h"
#include "GaugewellUI/Support/BackgroundWork.h"
#include "GaugewellUI/Support/Localizable.h"
#include "GaugewellUI/Support/Logging.h"
#include "Platform/SettingsKeys.h"

#include <QElapsedTimer>
#include <algorithm>

namespace gaugewell {

namespace {

using States = std::map<ProviderService, ProviderConnectionState>;

std::vector<ProviderRegistration> registrations(const UsageAppModel::Dependencies& dependencies) {
    std::vector<ProviderRegistration> result;
    for (const auto service : allProviderServices) {
        result.emplace_back(*Uuid::parse(connectionID(service)),
                            std::make_shared<AuthenticationGatedProvider>(
                                service, dependencies.collectors[service], dependencies.authentication));
    }
    return result;
}

} // namespace

UsageAppModel::UsageAppModel(Dependencies dependencies, QObject* parent)
    : QObject(parent)
    , dependencies(std::move(dependencies))
    , coordinator(std::make_shared<RefreshCoordinator>(
          registrations(this->dependencies), this->dependencies.backoffPolicy, this->dependencies.now)) {
    for (const auto service : allProviderServices) {
        connectionStates_.emplace(service,
                                  ProviderConnectionState{service, ProviderConnectionStatus::checking,
                                                          Localizable::tr("Checking sign-in").toStdString()});
    }
    QObject::connect(&refreshTimer, &SuspendAwareTimer::timeout, this, [this] {
        refreshIfDue();
        if (!isRefreshing()) {
            scheduleNextRefresh(); // not due yet: the clock moved, or the wait was capped
        }
    });
    intervalSettings = this->dependencies.defaults->observe([this](const std::string& key) {
        if (key.empty() || key == settingsKey::refreshActiveSeconds ||
            key == settingsKey::refreshIdleSeconds) {
            QMetaObject::invokeMethod(this, &UsageAppModel::scheduleNextRefresh, Qt::QueuedConnection);
        }
    });
}

UsageAppModel::~UsageAppModel() {
    // Widget clients still waiting get their 500 rather than nothing.
    for (auto& waiter : std::exchange(waiters, {})) {
        waiter(false);
    }
}

ProviderConnectionState UsageAppModel::connectionState(ProviderService service) const {
    const auto state = connectionStates_.find(service);
    if (state == connectionStates_.end()) {
        return {service, ProviderConnectionStatus::checking,
                Localizable::tr("Checking sign-in").toStdString()};
    }
    return state->second;
}

std::vector<ProviderMenuSnapshot> UsageAppModel::menuSnapshots() const {
    std::vector<ProviderMenuSnapshot> snapshots;
    for (const auto& provider : providers_) {
        snapshots.push_back({provider.descriptor.id(), provider.descriptor.displayName(), provider.windows});
    }
    return snapshots;
}

std::chrono::seconds UsageAppModel::refreshInterval() const {
    const double configured = dependencies.defaults->doubleValue(
        interactive ? settingsKey::refreshActiveSeconds : settingsKey::refreshIdleSeconds);
    if (configured > 0) {
        // Clamped to a day as well: a huge number must not overflow the comparison.
        return std::chrono::seconds(static_cast<long long>(std::clamp(configured, 120.0, 86400.0 * 365)));
    }
    return std::chrono::seconds(interactive ? 120 : 600);
}

void UsageAppModel::start() {
    if (didStart) {
        return;
    }
    didStart = true;
    auto permission = dependencies.hooks.beforeFirstRefresh ? dependencies.hooks.beforeFirstRefresh()
                                                            : QtFuture::makeReadyFuture();
    continueOn(this, permission, [this] { refresh(RefreshTrigger::manual); });
}

void UsageAppModel::setInteractive(bool value) {
    if (interactive != value) {
        interactive = value;
        scheduleNextRefresh();
    }
}

void UsageAppModel::scheduleNextRefresh() {
    if (!didStart || isRefreshing()) {
        return; // the refresh re-arms the timer when it finishes
    }
    using std::chrono::milliseconds;
    auto wait = milliseconds(0);
    if (lastUpdatedAt_) {
        wait = std::chrono::duration_cast<milliseconds>(*lastUpdatedAt_ + refreshInterval() -
                                                        dependencies.now());
    }
    refreshTimer.start(std::clamp(wait, milliseconds(0), dependencies.maximumSleep));
}

QFuture<void> UsageAppModel::refreshIfDue() {
    if (isRefreshing()) {
        return QtFuture::makeReadyFuture();
    }
    if (!lastUpdatedAt_) {
        return refresh(RefreshTrigger::scheduled);
    }
    if (dependencies.now() - *lastUpdatedAt_ >= refreshInterval()) {
        return refresh(RefreshTrigger::scheduled);
    }
    return QtFuture::makeReadyFuture();
}

QFuture<void> UsageAppModel::refresh(RefreshTrigger trigger) {
    if (refreshesRunning++ == 0) {
        emit refreshingChanged();
    }
    qCDebug(refreshLog).noquote() << "refresh started:" << logName(trigger);
    QElapsedTimer elapsed;
    elapsed.start();
    const auto authentication = dependencies.authentication;
    const auto coordinator = this->coordinator;
    // Both at once: a slow `codex login status` must not hold up the Claude check.
    QList<QFuture<ProviderConnectionState>> checks;
    for (const auto service : allProviderServices) {
        checks.append(runInBackground([authentication, service] { return authentication->status(service); }));
    }
    const auto collected =
        continueOn(this, QtFuture::whenAll(checks.begin(), checks.end()),
                   [this, coordinator, trigger](const QList<QFuture<ProviderConnectionState>>& answered) {
                       for (const auto& answer : answered) {
                           const auto state = answer.result();
                           connectionStates_.insert_or_assign(state.service, state);
                       }
                       emit connectionStatesChanged();
                       return runInBackground([coordinator, trigger] {
                           auto summary = coordinator->refresh(trigger);
                           std::vector<ProviderStateAssembler::SkippedProvider> skipped;
                           for (const auto& id : summary.skippedProviderIDs()) {
                               skipped.push_back({id, coordinator->nextAutomaticRefreshDate(id)});
                           }
                           return CollectedRefresh{std::move(summary), std::move(skipped)};
                       });
                   });
    const auto alerted = continueOn(this, collected, [this](const CollectedRefresh& refreshed) {
        publish(refreshed);
        return dependencies.hooks.afterPublish ? dependencies.hooks.afterPublish(providers_)
                                               : QtFuture::makeReadyFuture();
    });
    return continueOn(this, alerted, [this, trigger, elapsed] {
        qCDebug(refreshLog).noquote() << "refresh finished:" << logName(trigger) << elapsed.elapsed() << "ms";
        finishRefresh();
    });
}

void UsageAppModel::publish(const CollectedRefresh& collected) {
    std::map<ProviderService, ProviderDescriptor> descriptors;
    for (const auto& provider : providers_) {
        descriptors.emplace(provider.service, provider.descriptor);
    }
    static const RelativeTimeFormatter relativeTime;
    providers_ =
        ProviderStateAssembler::assemble(collected.summary.outcomes(), collected.skipped, descriptors,
                                         dependencies.now(), connectionStates_, relativeTime);
    historyPoints_ = ProviderStateAssembler::history(providers_);
    lastUpdatedAt_ = collected.summary.startedAt();
    for (const auto& provider : providers_) {
        for (const auto& diagnostic : provider.diagnostics) {
            qCDebug(diagnosticsLog).noquote() << logName(provider.service) << logName(diagnostic.severity())
                                              << QString::fromStdString(diagnostic.code());
        }
    }
    emit providersChanged();
}

void UsageAppModel::finishRefresh() {
    if (--refreshesRunning == 0) {
        scheduleNextRefresh();
        emit refreshingChanged();
        for (auto& waiter : std::exchange(waiters, {})) {
            waiter(true);
        }
    }
}

void UsageAppModel::afterRecentRefresh(std::chrono::seconds maximumAge, RefreshWaiter waiter) {
    if (!isRefreshing() && lastUpdatedAt_ && dependencies.now() - *lastUpdatedAt_ < maximumAge) {
        waiter(true);
        return;
    }
    waiters.push_back(std::move(waiter));
    if (!isRefreshing()) {
        refresh(RefreshTrigger::scheduled);
    }
}

void UsageAppModel::setAuthenticationAction(std::optional<ProviderService> service) {
    authenticationAction_ = service;
    emit authenticationActionChanged();
}

void UsageAppModel::setConnectionState(const ProviderConnectionState& state) {
    connectionStates_.insert_or_assign(state.service, state);
    emit connectionStatesChanged();
}

void UsageAppModel::rederive() {
    providers_ = ProviderStateAssembler::rederive(providers_, connectionStates_);
    historyPoints_ = ProviderStateAssembler::history(providers_);
    emit providersChanged();
}

QFuture<void> UsageAppModel::connectService(ProviderService service) {
    if (authenticationAction_) {
        return QtFuture::makeReadyFuture();
    }
    setAuthenticationAction(service);
    qCDebug(signInLog).noquote() << "sign-in started:" << logName(service);
    setConnectionState({service, ProviderConnectionStatus::connecting,
                        Localizable::tr("Complete sign-in in your browser").toStdString()});
    const auto authentication = dependencies.authentication;
    return continueOn(this,
                      runInBackground([authentication, service] { return authentication->login(service); }),
                      [this](const ProviderConnectionState& state) {
                          qCDebug(signInLog).noquote()
                              << "sign-in ended:" << logName(state.service) << logName(state.status);
                          setConnectionState(state);
                          setAuthenticationAction(std::nullopt);
                          if (state.isAuthenticated()) {
                              return refresh(RefreshTrigger::manual);
                          }
                          rederive();
                          return QtFuture::makeReadyFuture();
                      });
}

void UsageAppModel::cancelSignIn() {
    if (authenticationAction_) {
        dependencies.authentication->cancelLogin();
    }
}

QFuture<void> UsageAppModel::disconnectService(ProviderService service) {
    if (authenticationAction_) {
        return QtFuture::makeReadyFuture();
    }
    setAuthenticationAction(service);
    setConnectionState({service, ProviderConnectionStatus::disconnecting,
                        Localizable::tr("Disconnecting from Gaugewell").toStdString()});
    rederive();
    const auto authentication = dependencies.authentication;
    return continueOn(
        this, runInBackground([authentication, service] { return authentication->disconnect(service); }),
        [this](const ProviderConnectionState& state) {
            setConnectionState(state);
            setAuthenticationAction(std::nullopt);
        });
}

} // namespace gaugewell
