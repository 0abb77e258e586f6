#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace gaugewell {

// Where and how the widget asks the application for its snapshot: always the loopback
// interface over plain HTTP.
struct WidgetFeedEndpoint {
    static constexpr std::uint16_t defaultPort = 47392;
    static constexpr std::string_view portVariable = "GAUGEWELL_WIDGET_PORT";

    std::uint16_t port = defaultPort;
    std::chrono::milliseconds timeout{14'000};
    // A snapshot is a few hundred bytes; anything near this is not one.
    std::size_t maximumResponseBytes = 256 * 1024;

    // http://127.0.0.1:<port>/widget/v1
    std::string url() const;

    static constexpr std::string_view invalidPortMessage =
        "GAUGEWELL_WIDGET_PORT must be a port number from 1 to 65535";

    // The default endpoint, with the port taken from GAUGEWELL_WIDGET_PORT when that is set (tests
    // point the loader at their own server this way); absent when it is set to anything but a port
    // number (1-65535, digits only), which is an error, never a silent fallback to the default.
    static std::optional<WidgetFeedEndpoint> fromEnvironment();
};

} // namespace gaugewell
