#pragma once

#include "WidgetProviderUsage.h"
#include "WidgetResult.h"
#include "WidgetUsageLoaderError.h"

#include <string>
#include <string_view>
#include <vector>

namespace gaugewell {

// Everything the desktop widget shows; the only usage data that leaves the application.
class WidgetUsageSnapshot {
public:
    WidgetUsageSnapshot(WidgetDate updatedAt, std::vector<WidgetProviderUsage> providers)
        : updatedAt_(updatedAt)
        , providers_(std::move(providers)) {}

    WidgetDate updatedAt() const { return updatedAt_; }
    const std::vector<WidgetProviderUsage>& providers() const { return providers_; }

    // Compact JSON, keys in field order, dates as seconds since 2001-01-01 UTC.
    std::string json() const;
    // Unknown keys are ignored; a missing or null "resetAt" is absent; all or nothing.
    static WidgetResult<WidgetUsageSnapshot, WidgetSnapshotDecodingError> decode(std::string_view json);

    bool operator==(const WidgetUsageSnapshot&) const = default;

private:
    WidgetDate updatedAt_;
    std::vector<WidgetProviderUsage> providers_;
};

} // namespace gaugewell
