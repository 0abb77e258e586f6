#pragma once

#include "GaugewellUI/Model/ProviderViewState.h"
#include "RecordFixtures.h"

#include <optional>
#include <string>
#include <vector>

namespace gaugewell::testing {

// The fields the model tests vary; the rest is an exact, live, account-wide measurement.
struct WindowFields {
    std::string bucket = "primary";
    UsageWindowKind kind = UsageWindowKind::fiveHour;
    std::optional<std::string> used = std::nullopt;
    std::optional<std::string> remaining = std::nullopt;
    std::optional<std::string> name = std::nullopt;
    std::optional<std::string> modelID = std::nullopt;
    double observedAt = 1000;
    std::optional<double> resetAt = std::nullopt;
    std::optional<std::string> sourceVersion = std::nullopt;
};

inline UsageWindowSample windowSample(const WindowFields& fields) {
    const auto decimal = [](const std::optional<std::string>& text) {
        return text ? Decimal::parse(*text) : std::nullopt;
    };
    return UsageWindowSample(
        fields.bucket + "@" + std::to_string(fields.observedAt), fixedConnectionID(), fields.bucket,
        fields.name, fields.kind, fields.modelID, referencePlus(fields.observedAt), std::nullopt,
        std::nullopt, std::nullopt, std::nullopt,
        fields.resetAt ? std::optional(referencePlus(*fields.resetAt)) : std::nullopt, decimal(fields.used),
        decimal(fields.remaining), std::nullopt, std::nullopt, std::nullopt,
        MeasurementAuthority::vendorAuthoritative, MeasurementConfidence::exact, MeasurementCoverage::account,
        MeasurementFreshness::live, testSource(), fields.sourceVersion);
}

inline ProviderViewState viewState(ProviderService service, std::vector<UsageWindowSample> windows) {
    return ProviderViewState{
        service,
        ProviderDescriptor(std::string(providerID(service)), std::string(displayName(service)), std::nullopt),
        ProviderAvailability::availableWithLimitations,
        {},
        std::move(windows),
        {},
        {}};
}

} // namespace gaugewell::testing
