#include "AuthenticationGatedProvider.h"

#include "ProviderStateAssembler.h"

namespace gaugewell {

AuthenticationGatedProvider::AuthenticationGatedProvider(
    ProviderService service, std::shared_ptr<const GaugewellProvider> provider,
    std::shared_ptr<ProviderAuthenticating> authentication)
    : service(service)
    , provider(std::move(provider))
    , authentication(std::move(authentication)) {}

ProviderProbeResult AuthenticationGatedProvider::probe() const noexcept {
    const auto state = authentication->status(service);
    if (state.isAuthenticated()) {
        return provider->probe();
    }
    return ProviderProbeResult(provider->descriptor(),
                               ProviderStateAssembler::availabilityWhenNotSignedIn(state.status), {},
                               std::nullopt,
                               {ProviderStateAssembler::notSignedInDiagnostic(
                                   service, ProviderStateAssembler::notSignedInMessage(state))});
}

ProviderCollectionResult
AuthenticationGatedProvider::collect(const UsageCollectionRequest& request) const noexcept {
    const auto state = authentication->status(service);
    if (state.isAuthenticated()) {
        return provider->collect(request);
    }
    return ProviderCollectionResult(provider->descriptor(), request.observedAt(), {}, {},
                                    {ProviderStateAssembler::notSignedInDiagnostic(
                                        service, ProviderStateAssembler::notSignedInMessage(state))});
}

} // namespace gaugewell
