#pragma once

#include "ProviderKit/GaugewellProvider.h"
#include "UsageDomain/Uuid.h"

#include <memory>

namespace gaugewell {

// One provider to collect, and the connection its records are filed under.
class ProviderRegistration {
public:
    ProviderRegistration(Uuid connectionID, std::shared_ptr<const GaugewellProvider> provider)
        : connectionID_(connectionID)
        , provider_(std::move(provider)) {}

    const Uuid& connectionID() const { return connectionID_; }
    const GaugewellProvider& provider() const { return *provider_; }

private:
    Uuid connectionID_;
    std::shared_ptr<const GaugewellProvider> provider_;
};

} // namespace gaugewell
