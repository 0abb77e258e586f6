#include "WidgetOutput.h"

#include "UsageDomain/JsonValue.h"
#include "UsagePresentation/RelativeTimeFormatter.h"
#include "UsagePresentation/ResetTimeFormatter.h"
#include "UsagePresentation/UsagePercentage.h"

#include <algorithm>

namespace gaugewell {

namespace {

std::string providerName(WidgetProviderService service) {
    return service == WidgetProviderService::codex ? "Codex" : "Claude";
}

std::string percent(double fraction) {
    return percentageText(displayedPercentage(fraction).value_or(0));
}

// The first window is the shortest one: the one a user runs into first.
std::string headline(const WidgetProviderUsage& provider) {
    const std::string name = providerName(provider.service());
    if (provider.state() == WidgetProviderState::signInRequired) {
        return name + " sign-in";
    }
    if (provider.windows().empty()) {
        return name + " \u2014";
    }
    return name + " " + percent(provider.windows().front().usedFraction());
}

std::string details(const WidgetUsageSnapshot& snapshot, Date now) {
    const IcuResetTimeFormatter resetTime;
    const RelativeTimeFormatter relativeTime;
    std::string text;
    for (const auto& provider : snapshot.providers()) {
        if (!text.empty()) {
            text += '\n';
        }
        text += providerName(provider.service()) + ":";
        if (provider.state() == WidgetProviderState::signInRequired) {
            text += " sign in with `gaugewell connect " + std::string(rawValue(provider.service())) + "`";
            continue;
        }
        if (provider.windows().empty()) {
            text += " no usage available";
            continue;
        }
        for (const auto& window : provider.windows()) {
            text += "\n  " + window.name() + " " + percent(window.usedFraction()) + " used";
            if (window.resetAt()) {
                text += ", resets " + resetTime.format(*window.resetAt()) + " (" +
                        relativeTime.format(*window.resetAt(), now) + ")";
            }
        }
    }
    return text;
}

std::string waybarLine(std::string text, std::string tooltip, std::string cssClass, long long percentage) {
    return JsonValue(
               JsonValue::Object{{"text", JsonValue(std::move(text))},
                                 {"tooltip", JsonValue(std::move(tooltip))},
                                 {"class", JsonValue(std::move(cssClass))},
                                 {"percentage", JsonValue::number(static_cast<std::int64_t>(percentage))}})
        .serialized();
}

} // namespace

std::optional<WidgetOutputFormat> widgetOutputFormat(std::string_view name) {
    if (name == "json") {
        return WidgetOutputFormat::json;
    }
    if (name == "text") {
        return WidgetOutputFormat::text;
    }
    if (name == "waybar") {
        return WidgetOutputFormat::waybar;
    }
    return std::nullopt;
}

std::string widgetOutput(const WidgetUsageSnapshot& snapshot, WidgetOutputFormat format, Date now) {
    switch (format) {
    case WidgetOutputFormat::json:
        return snapshot.json();
    case WidgetOutputFormat::text:
        return details(snapshot, now);
    case WidgetOutputFormat::waybar:
        break;
    }
    std::string text;
    std::optional<double> highest;
    for (const auto& provider : snapshot.providers()) {
        text += (text.empty() ? "" : " \u00b7 ") + headline(provider);
        for (const auto& window : provider.windows()) {
            highest = std::max(highest.value_or(0.0), window.usedFraction());
        }
    }
    const char* cssClass = !highest           ? "unavailable"
                           : *highest >= 0.9  ? "critical"
                           : *highest >= 0.75 ? "warning"
                                              : "normal";
    return waybarLine(text, details(snapshot, now), cssClass,
                      displayedPercentage(highest.value_or(0)).value_or(0));
}

std::string waybarUnavailableLine(const std::string& problem) {
    return waybarLine("Gaugewell \u2014", problem, "unavailable", 0);
}

} // namespace gaugewell
