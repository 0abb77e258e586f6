#pragma once

#include "CodexPayloads.h"
#include "CodexProviderError.h"
#include "UsageDomain/Date.h"
#include "UsageDomain/Expected.h"
#include "UsageDomain/ProviderCollectionResult.h"
#include "UsageDomain/Uuid.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace gaugewell {

// A rate-limit line that does not decode (DecodeError), or one that decodes to an error or to
// no result (CodexProviderError::protocolError).
using CodexNormalizationError = std::variant<DecodeError, CodexProviderError>;

// Turns the two app-server response lines into usage records. Pure: no I/O, no state.
// Anything wrong with the account usage is reported by warnings, never as a failure.
class CodexPayloadNormalizer {
public:
    static Expected<ProviderCollectionResult, CodexNormalizationError>
    normalize(std::string_view rateLimitsData, const std::optional<std::string>& accountUsageData,
              const Uuid& connectionID, Date observedAt, const std::optional<std::string>& sourceVersion);

    // A strict "yyyy-MM-dd" day in the proleptic Gregorian calendar, at 00:00 UTC.
    static std::optional<Date> parseDay(std::string_view text);
};

} // namespace gaugewell
