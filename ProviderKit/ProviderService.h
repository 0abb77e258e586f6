#pragma once

#include "UsageDomain/RawValue.h"

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

} // namespace gaugewell
