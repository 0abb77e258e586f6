#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace gaugewell {

enum class WidgetProviderState { available, signInRequired, unavailable };

inline constexpr std::array<std::string_view, 3> widgetProviderStateNames{"available", "signInRequired",
                                                                          "unavailable"};

constexpr std::string_view rawValue(WidgetProviderState state) {
    return widgetProviderStateNames[static_cast<std::size_t>(state)];
}

// Exact, case-sensitive.
constexpr std::optional<WidgetProviderState> widgetProviderState(std::string_view text) {
    for (std::size_t index = 0; index < widgetProviderStateNames.size(); ++index) {
        if (widgetProviderStateNames[index] == text) {
            return static_cast<WidgetProviderState>(index);
        }
    }
    return std::nullopt;
}

} // namespace gaugewell
