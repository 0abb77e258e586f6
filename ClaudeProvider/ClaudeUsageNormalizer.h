#pragma once

#include "UsageDomain/Date.h"
#include "UsageDomain/Expected.h"
#include "UsageDomain/JsonCoding.h"
#include "UsageDomain/ProviderCollectionResult.h"
#include "UsageDomain/Uuid.h"

#include <string_view>

namespace gaugewell {

// Turns the Claude usage answer into window samples. Stateless.
class ClaudeUsageNormalizer {
public:
    // Fails only when the body does not decode as the usage answer. Rejected windows become warnings;
    // a result without any window carries the error "claude.no_usage_windows".
    Expected<ProviderCollectionResult, DecodeError> normalize(std::string_view body, const Uuid& connectionID,
                                                              Date observedAt) const;
};

} // namespace gaugewell
