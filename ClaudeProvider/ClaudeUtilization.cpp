#include "ClaudeUtilization.h"

namespace gaugewell {

ClaudeUtilizationWindow JsonCoder<ClaudeUtilizationWindow>::decode(const JsonValue& json,
                                                                   const std::string& path) {
    const KeyedDecoder decoder(json, path);
    return ClaudeUtilizationWindow{
        decoder.decodeIfPresent<Decimal>("utilization"),
        decoder.decodeIfPresent<std::string>("resets_at"),
    };
}

ClaudeUtilization JsonCoder<ClaudeUtilization>::decode(const JsonValue& json, const std::string& path) {
    const KeyedDecoder decoder(json, path);
    return ClaudeUtilization{
        decoder.decodeIfPresent<ClaudeUtilizationWindow>("five_hour"),
        decoder.decodeIfPresent<ClaudeUtilizationWindow>("seven_day"),
        decoder.decodeIfPresent<ClaudeUtilizationWindow>("seven_day_oauth_apps"),
        decoder.decodeIfPresent<ClaudeUtilizationWindow>("seven_day_opus"),
        decoder.decodeIfPresent<ClaudeUtilizationWindow>("seven_day_sonnet"),
        decoder.decodeIfPresent<ClaudeUtilizationWindow>("seven_day_cowork"),
    };
}

} // namespace gaugewell
