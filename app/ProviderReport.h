#pragma once

#include "UsageDomain/Date.h"
#include "UsageDomain/JsonValue.h"
#include "UsageDomain/ProviderCollectionResult.h"
#include "UsageDomain/ProviderProbeResult.h"

#include <string>

namespace gaugewell {

// What `gaugewell probe|collect` print: the records' keyed JSON, or a short table for people.
class ProviderReport {
public:
    static JsonValue probeJson(const ProviderProbeResult& result);
    static JsonValue collectionJson(const ProviderCollectionResult& result);

    // Times are shown in the local time zone, relative to `now`.
    static std::string probeText(const ProviderProbeResult& result);
    static std::string collectionText(const ProviderCollectionResult& result, Date now);

    // "42%": used share of a window, rounded half away from zero; "-" when the window gives none.
    static std::string usedPercentText(const UsageWindowSample& window);
    // "in 2h 13m", "in 45s", "now" for past moments.
    static std::string relativeText(Date moment, Date now);
};

} // namespace gaugewell
