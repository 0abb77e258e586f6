#pragma once

#include "ProviderKit/Authentication/ProviderAuthenticating.h"
#include "ProviderKit/GaugewellProvider.h"

#include <memory>

namespace gaugewell {

// Lets a collector probe or collect only while its service is signed in; otherwise answers with
// a warning (never an error, so that a signed-out service is not backed off).
class AuthenticationGatedProvider final : public GaugewellProvider {
public:
    AuthenticationGatedProvider(ProviderService service, std::shared_ptr<const GaugewellProvider> provider,
                                std::shared_ptr<ProviderAuthenticating> authentication);

    const ProviderDescriptor& descriptor() const override { return provider->descriptor(); }
    ProviderProbeResult probe() const noexcept override;
    ProviderCollectionResult collect(const UsageCollectionRequest& request) const noexcept override;

private:
    const ProviderService service;
    const std::shared_ptr<const GaugewellProvider> provider;
    const std::shared_ptr<ProviderAuthenticating> authentication;
};

} // namespace gaugewell
