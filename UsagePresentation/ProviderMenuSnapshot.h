#pragma once

#include "UsageDomain/UsageWindowSample.h"

#include <string>
#include <vector>

namespace gaugewell {

// What the menu bar knows of one provider: every window it has, not only the current ones.
struct ProviderMenuSnapshot {
    std::string providerID;
    std::string displayName;
    std::vector<UsageWindowSample> windows;

    bool operator==(const ProviderMenuSnapshot&) const = default;
};

} // namespace gaugewell
