#pragma once

#include "ProviderCapabilities.h"
#include "ProviderDescriptor.h"
#include "ProviderDiagnostic.h"
#include "ProviderEnumerations.h"

#include <optional>
#include <string>
#include <vector>

namespace gaugewell {

// What a probe found: whether the provider can work here, what it offers, which source version it sees.
class ProviderProbeResult {
public:
    ProviderProbeResult(ProviderDescriptor provider, ProviderAvailability availability,
                        ProviderCapabilities capabilities, std::optional<std::string> sourceVersion,
                        std::vector<ProviderDiagnostic> diagnostics)
        : provider_(std::move(provider))
        , availability_(availability)
        , capabilities_(capabilities)
        , sourceVersion_(std::move(sourceVersion))
        , diagnostics_(std::move(diagnostics)) {}

    const ProviderDescriptor& provider() const { return provider_; }
    ProviderAvailability availability() const { return availability_; }
    ProviderCapabilities capabilities() const { return capabilities_; }
    const std::optional<std::string>& sourceVersion() const { return sourceVersion_; }
    const std::vector<ProviderDiagnostic>& diagnostics() const { return diagnostics_; }

private:
    ProviderDescriptor provider_;
    ProviderAvailability availability_;
    ProviderCapabilities capabilities_;
    std::optional<std::string> sourceVersion_;
    std::vector<ProviderDiagnostic> diagnostics_;
};

} // namespace gaugewell
