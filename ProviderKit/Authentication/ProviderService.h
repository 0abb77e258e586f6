#pragma once

#include "UsageDomain/RawValue.h"
#include "UsageDomain/Translatable.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace gaugewell {

// The services Gaugewell can connect, always listed in this order.
enum class ProviderService { codex, claude };

template <> struct RawValues<ProviderService> {
    static constexpr std::array<std::string_view, 2> names{"codex", "claude"};
};

// What is fixed about each service, in one place; indexed by the service's value.
struct ServiceFacts {
    ProviderService service;
    std::string_view providerID;
    // Connections are fixed, one per service.
    std::string_view connectionID;
    std::string_view displayName;
    // Whether Gaugewell itself holds the credentials (Claude) or the service's own tool does (Codex).
    bool ownsCredentials;
    std::string_view connectExplanation;
    std::string_view disconnectExplanation;
};

inline constexpr std::array<ServiceFacts, 2> serviceFacts{{
    {ProviderService::codex, "app.gaugewell.codex.subscription", "A115A6E0-337E-4F26-9809-6B2E75C39D01",
     "Codex", false, QT_TRANSLATE_NOOP("Localizable", "Opens the official ChatGPT sign-in managed by Codex."),
     QT_TRANSLATE_NOOP("Localizable",
                       "Signs out the shared ChatGPT session used by Gaugewell and the Codex CLI.")},
    {ProviderService::claude, "app.gaugewell.claude.subscription", "A115A6E0-337E-4F26-9809-6B2E75C39D02",
     "Claude", true,
     QT_TRANSLATE_NOOP("Localizable",
                       "Opens Claude sign-in in your browser. Inference permission is never requested."),
     QT_TRANSLATE_NOOP("Localizable",
                       "Revokes this app's Claude tokens and removes them from your keyring.")},
}};

constexpr const ServiceFacts& facts(ProviderService service) {
    return serviceFacts[static_cast<std::size_t>(service)];
}

inline constexpr std::array<ProviderService, 2> allProviderServices{ProviderService::codex,
                                                                    ProviderService::claude};

// One value for each service, indexed by the service.
template <class T> struct PerService {
    std::array<T, 2> values{};

    T& operator[](ProviderService service) { return values[static_cast<std::size_t>(service)]; }
    const T& operator[](ProviderService service) const { return values[static_cast<std::size_t>(service)]; }
};

inline constexpr std::string_view codexProviderID = serviceFacts[0].providerID;
inline constexpr std::string_view claudeProviderID = serviceFacts[1].providerID;

constexpr std::string_view providerID(ProviderService service) {
    return facts(service).providerID;
}
constexpr std::string_view connectionID(ProviderService service) {
    return facts(service).connectionID;
}
constexpr std::string_view displayName(ProviderService service) {
    return facts(service).displayName;
}
constexpr int sortOrder(ProviderService service) {
    return static_cast<int>(service);
}

constexpr std::optional<ProviderService> serviceForProviderID(std::string_view id) {
    for (const auto& service : serviceFacts) {
        if (service.providerID == id) {
            return service.service;
        }
    }
    return std::nullopt;
}

} // namespace gaugewell
