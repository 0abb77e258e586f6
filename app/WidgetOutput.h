#pragma once

#include "GaugewellWidgetSupport/WidgetUsageSnapshot.h"
#include "UsageDomain/Date.h"

#include <optional>
#include <string>
#include <string_view>

namespace gaugewell {

enum class WidgetOutputFormat { json, text, waybar };

std::optional<WidgetOutputFormat> widgetOutputFormat(std::string_view name);

// The feed's snapshot for a terminal (text), a script (json) or waybar's custom module: one line
// {"text":…,"tooltip":…,"class":…,"percentage":…}, class "normal", "warning" (75 % or more),
// "critical" (90 % or more) or "unavailable".
std::string widgetOutput(const WidgetUsageSnapshot& snapshot, WidgetOutputFormat format, Date now);

// A waybar line for when the feed cannot be read, so the bar shows the problem instead of nothing.
std::string waybarUnavailableLine(const std::string& problem);

} // namespace gaugewell
