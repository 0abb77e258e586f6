#pragma once

#include "UsageDomain/ProviderCollectionResult.h"
#include "UsageDomain/ProviderDescriptor.h"
#include "UsageDomain/ProviderProbeResult.h"
#include "UsageDomain/UsageCollectionRequest.h"

namespace gaugewell {

// A usage collector for one service. Both operations block until done, are safe to call from
// any thread, and never fail: whatever went wrong is described by the result's diagnostics.
class GaugewellProvider {
public:
    virtual ~GaugewellProvider() = default;

    // Constant for the provider's life; equal to the `provider` of every result it returns.
    virtual const ProviderDescriptor& descriptor() const = 0;
    // Whether it can work here (tool installed, version supported, signed in); reads no usage.
    virtual ProviderProbeResult probe() const noexcept = 0;
    // The usage the service reports now, filed under the request's connection and moment.
    virtual ProviderCollectionResult collect(const UsageCollectionRequest& request) const noexcept = 0;
};

} // namespace gaugewell
