#pragma once

#include <optional>
#include <string_view>

namespace gaugewell {

// The services the widget lists, always in this order.
enum class WidgetProviderService { codex, claude };

constexpr std::string_view rawValue(WidgetProviderService service) {
    return service == WidgetProviderService::codex ? "codex" : "claude";
}

// Exact, case-sensitive.
constexpr std::optional<WidgetProviderService> widgetProviderService(std::string_view text) {
    if (text == "codex") {
        return WidgetProviderService::codex;
    }
    if (text == "claude") {
        return WidgetProviderService::claude;
    }
    return std::nullopt;
}

} // namespace gaugewell
