#pragma once

#include "ProviderKit/Authentication/ProviderConnectionState.h"
#include "ProviderViewState.h"
#include "UsageCoordinator/ProviderRefreshOutcome.h"
#include "UsagePresentation/RelativeTimeFormatter.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace gaugewell {

// Turns a refresh into what the interface shows: one view state per service, and the daily
// token history. Pure functions of their inputs.
class ProviderStateAssembler {
public:
    // A provider the coordinator held back, and when it will be tried again.
    struct SkippedProvider {
        std::string providerID;
        std::optional<Date> retryAt;
    };
    using ConnectionStates = std::map<ProviderService, ProviderConnectionState>;

    static std::vector<ProviderViewState>
    assemble(const std::vector<ProviderRefreshOutcome>& outcomes, const std::vector<SkippedProvider>& skipped,
             const std::map<ProviderService, ProviderDescriptor>& descriptors, Date now,
             const ConnectionStates& connectionStates, const RelativeTimeFormatter& relativeTime);

    // Daily totals per service in the local calendar, oldest first.
    static std::vector<HistoryPoint> history(const std::vector<ProviderViewState>& providers);

    // Without collecting: every service that is not signed in shows the sign-in prompt instead.
    static std::vector<ProviderViewState> rederive(const std::vector<ProviderViewState>& providers,
                                                   const ConnectionStates& connectionStates);

    // The view state, and the probe's or collection's warning, of a service that cannot be read
    // because of its connection.
    static ProviderAvailability availabilityWhenNotSignedIn(ProviderConnectionStatus status);
    static ProviderDiagnostic notSignedInDiagnostic(ProviderService service, const std::string& message);
    static std::string notSignedInMessage(const std::optional<ProviderConnectionState>& state);
};

} // namespace gaugewell
