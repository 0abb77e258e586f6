#include "ProviderStateAssembler.h"

#include "GaugewellUI/Support/Localizable.h"

#include <QCoreApplication>
#include <algorithm>
#include <ctime>
#include <limits>

namespace gaugewell {

namespace {

ProviderViewState emptyState(ProviderService service, ProviderDescriptor descriptor,
                             ProviderAvailability availability, std::vector<ProviderDiagnostic> diagnostics) {
    return {service, std::move(descriptor), availability, {}, {}, {}, std::move(diagnostics)};
}

std::string replacingPlaceholder(std::string text, const std::string& value) {
    const auto at = text.find("%@");
    if (at != std::string::npos) {
        text.replace(at, 2, value);
    }
    return text;
}

Date startOfLocalDay(Date moment) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(moment);
    std::tm local{};
    localtime_r(&seconds, &local);
    local.tm_hour = 0;
    local.tm_min = 0;
    local.tm_sec = 0;
    local.tm_isdst = -1; // let the calendar decide for that day
    return std::chrono::system_clock::from_time_t(std::mktime(&local));
}

} // namespace

ProviderAvailability ProviderStateAssembler::availabilityWhenNotSignedIn(ProviderConnectionStatus status) {
    switch (status) {
    case ProviderConnectionStatus::notInstalled:
        return ProviderAvailability::notInstalled;
    case ProviderConnectionStatus::unsupportedVersion:
        return ProviderAvailability::unsupportedVersion;
    default:
        return ProviderAvailability::authenticationRequired;
    }
}

ProviderDiagnostic ProviderStateAssembler::notSignedInDiagnostic(ProviderService service,
                                                                 const std::string& message) {
    return ProviderDiagnostic(DiagnosticSeverity::warning,
                              std::string(rawValue(service)) + ".authentication_required", message);
}

std::string ProviderStateAssembler::notSignedInMessage(const std::optional<ProviderConnectionState>& state) {
    if (state && state->detail) {
        return *state->detail;
    }
    return Localizable::tr("Sign in to access this account's usage.").toStdString();
}

std::vector<ProviderViewState> ProviderStateAssembler::assemble(
    const std::vector<ProviderRefreshOutcome>& outcomes, const std::vector<SkippedProvider>& skipped,
    const std::map<ProviderService, ProviderDescriptor>& descriptors, Date now,
    const ConnectionStates& connectionStates, const RelativeTimeFormatter& relativeTime) {
    std::vector<ProviderViewState> states;
    for (const auto& outcome : outcomes) {
        const auto service = serviceForProviderID(outcome.providerID());
        if (!service) {
            continue;
        }
        const auto& collection = outcome.collection();
        const auto connection = connectionStates.find(*service);
        if (connection == connectionStates.end()) {
            states.push_back(emptyState(
                *service, collection.provider(), ProviderAvailability::authenticationRequired,
                {notSignedInDiagnostic(*service, Localizable::tr("Checking sign-in").toStdString())}));
            continue;
        }
        if (connection->second.status != ProviderConnectionStatus::signedIn) {
            states.push_back(emptyState(
                *service, collection.provider(), availabilityWhenNotSignedIn(connection->second.status),
                {notSignedInDiagnostic(*service, notSignedInMessage(connection->second))}));
            continue;
        }
        ProviderCapabilities capabilities;
        if (!collection.windows().empty()) {
            capabilities.insert(ProviderCapabilities::currentWindows);
            capabilities.insert(ProviderCapabilities::resetTimes);
        }
        if (!collection.tokenBuckets().empty()) {
            if (*service == ProviderService::codex) {
                capabilities.insert(ProviderCapabilities::accountTokenHistory);
            } else {
                capabilities.insert(ProviderCapabilities::deviceTokenHistory);
                capabilities.insert(ProviderCapabilities::modelBreakdown);
            }
        }
        states.push_back({*service, collection.provider(),
                          collection.hasErrorDiagnostic() ? ProviderAvailability::temporarilyUnavailable
                                                          : ProviderAvailability::availableWithLimitations,
                          capabilities, collection.windows(), collection.tokenBuckets(),
                          collection.diagnostics()});
    }
    for (const auto& held : skipped) {
        const auto service = serviceForProviderID(held.providerID);
        if (!service) {
            continue;
        }
        const auto known = descriptors.find(*service);
        ProviderDescriptor descriptor =
            known != descriptors.end()
                ? known->second
                : ProviderDescriptor(held.providerID, std::string(displayName(*service)), std::nullopt);
        const std::string message =
            held.retryAt
                ? replacingPlaceholder(
                      Localizable::tr("The last refresh failed. Retrying %@ — or refresh now.").toStdString(),
                      relativeTime.format(*held.retryAt, now))
                : Localizable::tr("The last refresh failed. Waiting before retrying.").toStdString();
        states.push_back(
            emptyState(*service, std::move(descriptor), ProviderAvailability::temporarilyUnavailable,
                       {ProviderDiagnostic(DiagnosticSeverity::warning,
                                           std::string(rawValue(*service)) + ".refresh_backoff", message)}));
    }
    std::stable_sort(states.begin(), states.end(), [](const auto& left, const auto& right) {
        return sortOrder(left.service) < sortOrder(right.service);
    });
    return states;
}

std::vector<HistoryPoint> ProviderStateAssembler::history(const std::vector<ProviderViewState>& providers) {
    std::vector<HistoryPoint> points;
    for (const auto& provider : providers) {
        std::map<Date, std::optional<std::int64_t>> totalsByDay;
        for (const auto& bucket : provider.tokenBuckets) {
            auto& total = totalsByDay[startOfLocalDay(bucket.intervalStart())];
            if (const auto tokens = bucket.totalTokens()) {
                std::int64_t sum = total.value_or(0);
                // A sum beyond 64 bits is a broken source; it stays at the largest value.
                if (__builtin_add_overflow(sum, *tokens, &sum)) {
                    sum = *tokens > 0 ? std::numeric_limits<std::int64_t>::max()
                                      : std::numeric_limits<std::int64_t>::min();
                }
                total = sum;
            }
        }
        for (const auto& [day, total] : totalsByDay) {
            if (!total) {
                continue;
            }
            const auto seconds =
                std::chrono::duration_cast<std::chrono::seconds>(day.time_since_epoch()).count();
            points.push_back({provider.descriptor.id() + ":" + std::to_string(seconds), provider.service,
                              provider.descriptor.displayName(), day, *total});
        }
    }
    std::stable_sort(points.begin(), points.end(),
                     [](const auto& left, const auto& right) { return left.date < right.date; });
    return points;
}

std::vector<ProviderViewState>
ProviderStateAssembler::rederive(const std::vector<ProviderViewState>& providers,
                                 const ConnectionStates& connectionStates) {
    std::vector<ProviderViewState> states;
    for (const auto& provider : providers) {
        const auto connection = connectionStates.find(provider.service);
        if (connection != connectionStates.end() &&
            connection->second.status == ProviderConnectionStatus::signedIn) {
            states.push_back(provider);
            continue;
        }
        states.push_back(
            emptyState(provider.service, provider.descriptor, ProviderAvailability::authenticationRequired,
                       {notSignedInDiagnostic(
                           provider.service,
                           Localizable::tr("Sign in to access this account's usage.").toStdString())}));
    }
    return states;
}

} // namespace gaugewell
