#include "WidgetSnapshotBuilder.h"

#include "UsagePresentation/WindowDisplayName.h"

#include <algorithm>
#include <string>

namespace gaugewell::WidgetSnapshotBuilder {

namespace {

WidgetProviderService widgetService(ProviderService service) {
    return service == ProviderService::codex ? WidgetProviderService::codex : WidgetProviderService::claude;
}

// 1 - remaining, computed in decimal so that 0.3 remaining reads as exactly 0.7 used. Out-of-range
// shares clamp before any arithmetic, so only 0 < remaining < 1 is subtracted, where the plain
// text is always "0.<digits>".
double usedShareFromRemaining(const Decimal& remaining) {
    if (remaining >= Decimal(1)) {
        return 0;
    }
    if (remaining <= Decimal(0)) {
        return 1;
    }
    const std::string text = remaining.text();
    std::string digits = text.substr(2);
    // 10^n - d: nines' complement plus one; the last digit is never 0 because text() drops trailing zeros.
    for (auto& digit : digits) {
        digit = static_cast<char>('9' - (digit - '0'));
    }
    digits.back() = static_cast<char>(digits.back() + 1);
    if (const auto used = Decimal::parse("0." + digits)) {
        return used->toDouble();
    }
    return 1.0 - remaining.toDouble(); // more digits than a Decimal holds: the nearest double will do
}

WidgetProviderUsage
providerUsage(ProviderService service, const std::vector<ProviderViewState>& providers,
              const std::map<ProviderService, ProviderConnectionState>& connectionStates) {
    const auto viewState = std::find_if(providers.begin(), providers.end(),
                                        [service](const auto& state) { return state.service == service; });
    if (viewState == providers.end()) {
        return WidgetProviderUsage(widgetService(service), WidgetProviderState::unavailable, {});
    }
    std::vector<WidgetWindow> windows;
    for (const auto& sample : viewState->currentWindows()) {
        if (auto window = widgetWindow(sample)) {
            windows.push_back(std::move(*window));
        }
    }
    if (!windows.empty()) {
        return WidgetProviderUsage(widgetService(service), WidgetProviderState::available,
                                   std::move(windows));
    }
    const auto connection = connectionStates.find(service);
    const bool signedIn = connection != connectionStates.end() && connection->second.isAuthenticated();
    return WidgetProviderUsage(
        widgetService(service),
        signedIn ? WidgetProviderState::unavailable : WidgetProviderState::signInRequired, {});
}

} // namespace

std::string_view defaultWindowName(UsageWindowKind kind) {
    return windowKindDisplayName(kind);
}

std::optional<WidgetWindow> widgetWindow(const UsageWindowSample& sample) {
    double used = 0;
    if (sample.usedFraction()) {
        used = sample.usedFraction()->toDouble();
    } else if (sample.remainingFraction()) {
        used = usedShareFromRemaining(*sample.remainingFraction());
    } else {
        return std::nullopt;
    }
    std::string name = sample.providerBucketName() ? *sample.providerBucketName()
                                                   : std::string(defaultWindowName(sample.windowKind()));
    // The record clamps the share to 0...1.
    return WidgetWindow(sample.providerBucketID(), std::move(name), used, sample.resetAt());
}

WidgetUsageSnapshot build(const std::vector<ProviderViewState>& providers,
                          const std::map<ProviderService, ProviderConnectionState>& connectionStates,
                          std::optional<Date> lastUpdatedAt, Date now) {
    std::vector<WidgetProviderUsage> usages;
    for (const auto service : allProviderServices) {
        usages.push_back(providerUsage(service, providers, connectionStates));
    }
    return WidgetUsageSnapshot(lastUpdatedAt.value_or(now), std::move(usages));
}

WidgetUsageSnapshot build(const UsageAppModel& model) {
    return build(model.providers(), model.connectionStates(), model.lastUpdatedAt(), model.now());
}

} // namespace gaugewell::WidgetSnapshotBuilder
