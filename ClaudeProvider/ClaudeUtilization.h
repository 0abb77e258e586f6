#pragma once

#include "UsageDomain/Decimal.h"
#include "UsageDomain/JsonCoding.h"

#include <optional>
#include <string>

namespace gaugewell {

// One window of the Claude usage answer. `utilization` is the percent used, kept exact.
struct ClaudeUtilizationWindow {
    std::optional<Decimal> utilization;  // "utilization"; a JSON string fails the decoding
    std::optional<std::string> resetsAt; // "resets_at", an internet date-time
};

// The whole Claude usage answer; unknown keys are ignored, missing and null windows are absent.
struct ClaudeUtilization {
    std::optional<ClaudeUtilizationWindow> fiveHour;          // "five_hour"
    std::optional<ClaudeUtilizationWindow> sevenDay;          // "seven_day"
    std::optional<ClaudeUtilizationWindow> sevenDayOAuthApps; // "seven_day_oauth_apps"
    std::optional<ClaudeUtilizationWindow> sevenDayOpus;      // "seven_day_opus"
    std::optional<ClaudeUtilizationWindow> sevenDaySonnet;    // "seven_day_sonnet"
    std::optional<ClaudeUtilizationWindow> sevenDayCowork;    // "seven_day_cowork"
};

template <> struct JsonCoder<ClaudeUtilizationWindow> {
    static ClaudeUtilizationWindow decode(const JsonValue& json, const std::string& path);
};

template <> struct JsonCoder<ClaudeUtilization> {
    static ClaudeUtilization decode(const JsonValue& json, const std::string& path);
};

} // namespace gaugewell
