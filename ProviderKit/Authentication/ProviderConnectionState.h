#pragma once

#include "ProviderKit/Authentication/ProviderService.h"
#include "UsageDomain/RawValue.h"

#include <optional>
#include <string>

namespace gaugewell {

enum class ProviderConnectionStatus {
    checking,
    notInstalled,
    unsupportedVersion,
    disconnected,
    signedOut,
    signedIn,
    connecting,
    disconnecting,
    failed,
};

template <> struct RawValues<ProviderConnectionStatus> {
    static constexpr std::array<std::string_view, 9> names{
        "checking", "notInstalled", "unsupportedVersion", "disconnected", "signedOut",
        "signedIn", "connecting",   "disconnecting",      "failed"};
};

// Whether a service is connected, with a fixed sentence for the user.
struct ProviderConnectionState {
    ProviderService service;
    ProviderConnectionStatus status;
    std::optional<std::string> detail;

    bool isAuthenticated() const { return status == ProviderConnectionStatus::signedIn; }
    bool isBusy() const {
        return status == ProviderConnectionStatus::checking ||
               status == ProviderConnectionStatus::connecting ||
               status == ProviderConnectionStatus::disconnecting;
    }
    bool operator==(const ProviderConnectionState&) const = default;
};

} // namespace gaugewell
