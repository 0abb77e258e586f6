#pragma once

#include "WidgetProviderService.h"
#include "WidgetProviderState.h"
#include "WidgetWindow.h"

#include <string>
#include <vector>

namespace gaugewell {

class WidgetProviderUsage {
public:
    WidgetProviderUsage(WidgetProviderService service, WidgetProviderState state,
                        std::vector<WidgetWindow> windows)
        : service_(service)
        , state_(state)
        , windows_(std::move(windows)) {}

    WidgetProviderService service() const { return service_; }
    WidgetProviderState state() const { return state_; }
    const std::vector<WidgetWindow>& windows() const { return windows_; }

    // {"service":…,"state":…,"windows":[…]}
    std::string json() const;

    bool operator==(const WidgetProviderUsage&) const = default;

private:
    WidgetProviderService service_;
    WidgetProviderState state_;
    std::vector<WidgetWindow> windows_;
};

} // namespace gaugewell
