#pragma once

#include "UsageDomain/RawValue.h"

#include <array>
#include <optional>
#include <string_view>

namespace gaugewell {

// The services Gaugewell can connect, always listed in this order.
enum class ProviderService { codex, claude };

template <> struct RawValues<ProviderService> {
    static constexpr std::array<std::string_view, 2> names{"codex", "claude"};
};

inline constexpr std::string_view codexProviderID = "app.gaugewell.codex.subscription";
inline constexpr std::string_view claudeProviderID = "app.gaugewell.claude.subscription";
// Connections are fixed, one per service.
inline constexpr std::string_view codexConnectionID = "A115A6E0-337E-4F26-9809-6B2E75C39D01";
inline constexpr std::string_view claudeConnectionID = "A115A6E0-337E-4F26-9809-6B2E75C39D02";

constexpr std::string_view providerID(ProviderService service) {
    return service == ProviderService::codex ? codexProviderID : claudeProviderID;
}

constexpr std::string_view connectionID(ProviderService service) {
    return service == ProviderService::codex ? codexConnectionID : claudeConnectionID;
}

inline constexpr std::array<ProviderService, 2> allProviderServices{ProviderService::codex,
                                                                    ProviderService::claude};

constexpr std::string_view displayName(ProviderService service) {
    return service == ProviderService::codex ? "Codex" : "Claude";
}

constexpr int sortOrder(ProviderService service) {
    return service == ProviderService::codex ? 0 : 1;
}

// Whether Gaugewell itself holds the credentials (Claude) or the service's own tool does (Codex).
constexpr bool ownsCredentials(ProviderService service) {
    return service == ProviderService::claude;
}

constexpr std::string_view connectExplanation(ProviderService service) {
    return service == ProviderService::codex
               ? "Opens the official ChatGPT sign-in managed by Codex."
               : "Opens Claude sign-in in your browser. Inference permission is never requested.";
}

constexpr std::string_view disconnectExplanation(ProviderService service) {
    return service == ProviderService::codex
               ? "Signs out the shared ChatGPT session used by Gaugewell and the Codex CLI."
               : "Revokes this app's Claude tokens and removes them from the Keychain.";
}

constexpr std::optional<ProviderService> serviceForProviderID(std::string_view id) {
    if (id == codexProviderID) {
        return ProviderService::codex;
    }
    if (id == claudeProviderID) {
        return ProviderService::claude;
    }
    return std::nullopt;
}

} // namespace gaugewell
