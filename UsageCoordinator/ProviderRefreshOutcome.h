#pragma once

#include "UsageDomain/ProviderCollectionResult.h"

#include <string>

namespace gaugewell {

class ProviderRefreshOutcome {
public:
    ProviderRefreshOutcome(std::string providerID, ProviderCollectionResult collection)
        : providerID_(std::move(providerID))
        , collection_(std::move(collection)) {}

    const std::string& providerID() const { return providerID_; }
    const ProviderCollectionResult& collection() const { return collection_; }
    // Warnings and infos never count as a failure; one error does.
    bool providerFailed() const { return collection_.hasErrorDiagnostic(); }

private:
    std::string providerID_;
    ProviderCollectionResult collection_;
};

} // namespace gaugewell
