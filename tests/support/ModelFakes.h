#pragma once

#include "ProviderKit/Authentication/ProviderAuthenticating.h"
#include "ProviderKit/Authentication/ProviderService.h"
#include "ProviderKit/GaugewellProvider.h"

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace gaugewell::testing {

// Connection states set by the test; a sign-in succeeds (at once unless held).
class SettableAuthentication : public ProviderAuthenticating {
public:
    std::mutex mutex;
    std::map<ProviderService, ProviderConnectionState> states{
        {ProviderService::codex,
         {ProviderService::codex, ProviderConnectionStatus::signedIn, "ChatGPT account"}},
        {ProviderService::claude,
         {ProviderService::claude, ProviderConnectionStatus::signedIn, "Claude account · keyring"}}};

    ProviderConnectionState status(ProviderService service) override {
        const std::lock_guard lock(mutex);
        return states.at(service);
    }
    ProviderConnectionState login(ProviderService service) override {
        std::unique_lock lock(mutex);
        ++logins[service];
        released.wait_for(lock, std::chrono::seconds(10), [&] { return !holdLogins; });
        states[service] = {service, ProviderConnectionStatus::signedIn, "signed in"};
        return states[service];
    }
    ProviderConnectionState disconnect(ProviderService service) override {
        const std::lock_guard lock(mutex);
        states[service] = {service, ProviderConnectionStatus::signedOut, "Signed out"};
        return states[service];
    }
    void cancelLogin() override {}
    void set(ProviderService service, ProviderConnectionStatus status, std::string detail) {
        const std::lock_guard lock(mutex);
        states[service] = {service, status, std::move(detail)};
    }
    // Sign-ins wait while `holdLogins` is set, until `release`.
    void release() {
        const std::lock_guard lock(mutex);
        holdLogins = false;
        released.notify_all();
    }
    std::map<ProviderService, int> logins;
    bool holdLogins = false;

private:
    std::condition_variable released;
};

// Returns the windows and buckets the test gave it, filed under the request's connection.
class FixedCollector : public GaugewellProvider {
public:
    explicit FixedCollector(ProviderService service)
        : descriptor_(std::string(providerID(service)), std::string(displayName(service)), std::nullopt) {}
    const ProviderDescriptor& descriptor() const override { return descriptor_; }
    ProviderProbeResult probe() const noexcept override {
        return ProviderProbeResult(descriptor_, ProviderAvailability::available, {}, std::nullopt, {});
    }
    ProviderCollectionResult collect(const UsageCollectionRequest& request) const noexcept override {
        const std::lock_guard lock(mutex);
        return ProviderCollectionResult(descriptor_, request.observedAt(), windows, buckets, {});
    }
    void set(std::vector<UsageWindowSample> newWindows, std::vector<TokenUsageBucket> newBuckets = {}) {
        const std::lock_guard lock(mutex);
        windows = std::move(newWindows);
        buckets = std::move(newBuckets);
    }

private:
    ProviderDescriptor descriptor_;
    mutable std::mutex mutex;
    std::vector<UsageWindowSample> windows;
    std::vector<TokenUsageBucket> buckets;
};

} // namespace gaugewell::testing
