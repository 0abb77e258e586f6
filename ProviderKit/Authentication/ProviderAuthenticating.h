#pragma once

#include "ProviderKit/Authentication/ProviderConnectionState.h"

namespace gaugewell {

// Connection states of the services, and connecting or disconnecting them. Blocking; never throws.
class ProviderAuthenticating {
public:
    virtual ~ProviderAuthenticating() = default;
    virtual ProviderConnectionState status(ProviderService service) = 0;
    virtual ProviderConnectionState login(ProviderService service) = 0;
    virtual ProviderConnectionState disconnect(ProviderService service) = 0;
    // Ends a sign-in in progress from another thread.
    virtual void cancelLogin() = 0;
};

} // namespace gaugewell
