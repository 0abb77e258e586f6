#pragma once

#include "GaugewellUI/Model/ProviderViewState.h"
#include "ProviderKit/Authentication/ProviderConnectionState.h"
#include "UsageDomain/Date.h"
#include "UsageDomain/ProviderDiagnostic.h"
#include "UsageDomain/ProviderEnumerations.h"

#include <string>
#include <string_view>
#include <vector>

namespace gaugewell {

// What the diagnostics report may say about one provider: states, versions and codes, never usage
// values, messages, account identifiers or paths.
struct SanitizedProviderDiagnostics {
    std::string name;
    ProviderConnectionStatus connectionStatus;
    ProviderAvailability availability;
    std::vector<std::string> sourceVersions; // distinct, ascending
    std::vector<ProviderDiagnostic> diagnostics;

    static constexpr std::size_t maximumValueCharacters = 160;
    static constexpr std::size_t maximumSourceVersionCharacters = 40;

    // The view state's availability and diagnostics, and the source versions of its windows and buckets.
    static SanitizedProviderDiagnostics from(const ProviderViewState& provider,
                                             ProviderConnectionStatus connectionStatus);

    // The plain-text report; ends with a line feed.
    static std::string report(std::vector<SanitizedProviderDiagnostics> providers, Date generatedAt,
                              std::string_view appVersion, std::string_view build,
                              std::string_view systemVersion);

    // One line: line breaks become spaces, surrounding white space goes, at most 160 characters.
    static std::string flattened(std::string_view text);
    // The version number in a tool's version text ("0.169.0" of "codex-cli 0.169.0"), the only part
    // of it the report shows; absent when there is none.
    static std::optional<std::string> versionNumber(std::string_view versionText);

    bool operator==(const SanitizedProviderDiagnostics&) const = default;
};

// "2026-11-16T13:45:07Z": UTC, whole seconds.
std::string iso8601Text(Date date);

} // namespace gaugewell
