#pragma once

#include "UsageDomain/RawValue.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace gaugewell {

// What another process (a second launch, `gaugewell show`, the desktop file's actions) may ask
// the running application to do.
enum class ApplicationAction { popup, dashboard, settings, refresh, quit };

template <> struct RawValues<ApplicationAction> {
    static constexpr std::array<std::string_view, 5> names{"popup", "dashboard", "settings", "refresh",
                                                           "quit"};
};

// The settings window's pages, in sidebar order.
enum class SettingsDestination { accounts, menuBar, general };

template <> struct RawValues<SettingsDestination> {
    static constexpr std::array<std::string_view, 3> names{"accounts", "menuBar", "general"};
};

struct ApplicationRequest {
    ApplicationAction action;
    // Only `settings` takes one: the page to open.
    std::optional<SettingsDestination> page;

    bool operator==(const ApplicationRequest&) const = default;

    // An action name and its optional parameter as they arrive over D-Bus or the command line;
    // absent when the name is unknown or the parameter does not fit the action.
    static std::optional<ApplicationRequest> parse(std::string_view action,
                                                   std::optional<std::string_view> parameter);
};

inline std::optional<ApplicationRequest>
ApplicationRequest::parse(std::string_view action, std::optional<std::string_view> parameter) {
    const auto known = fromRawValue<ApplicationAction>(action);
    if (!known) {
        return std::nullopt;
    }
    if (!parameter) {
        return ApplicationRequest{*known, std::nullopt};
    }
    const auto page = fromRawValue<SettingsDestination>(*parameter);
    if (*known != ApplicationAction::settings || !page) {
        return std::nullopt;
    }
    return ApplicationRequest{*known, page};
}

} // namespace gaugewell
