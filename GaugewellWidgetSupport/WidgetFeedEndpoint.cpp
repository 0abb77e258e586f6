#include "WidgetFeedEndpoint.h"

#include <charconv>
#include <cstdlib>
#include <string_view>

namespace gaugewell {

std::string WidgetFeedEndpoint::url() const {
    return "http://127.0.0.1:" + std::to_string(port) + "/widget/v1";
}

std::optional<WidgetFeedEndpoint> WidgetFeedEndpoint::fromEnvironment() {
    WidgetFeedEndpoint endpoint;
    const char* value = std::getenv(std::string(portVariable).c_str());
    if (value == nullptr) {
        return endpoint;
    }
    const std::string_view text(value);
    unsigned port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    if (error != std::errc() || end != text.data() + text.size() || text.empty() || text.front() == '+' ||
        port < 1 || port > 65535) {
        return std::nullopt;
    }
    endpoint.port = static_cast<std::uint16_t>(port);
    return endpoint;
}

} // namespace gaugewell
