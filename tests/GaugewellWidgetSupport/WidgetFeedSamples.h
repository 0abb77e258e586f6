#pragma once

#include "GaugewellWidgetSupport/WidgetUsageSnapshot.h"

#include <string>

namespace gaugewell::testing {

inline WidgetUsageSnapshot sampleWidgetSnapshot() {
    return WidgetUsageSnapshot(
        widgetDateFromSecondsSinceReferenceDate(785001234.5),
        {WidgetProviderUsage(WidgetProviderService::codex, WidgetProviderState::available,
                             {WidgetWindow("primary", "Five-hour", 0.42,
                                           widgetDateFromSecondsSinceReferenceDate(785010000))}),
         WidgetProviderUsage(WidgetProviderService::claude, WidgetProviderState::signInRequired, {})});
}

// sampleWidgetSnapshot() as the feed must write it, byte for byte.
inline const std::string sampleWidgetJson =
    R"({"updatedAt":785001234.5,"providers":[{"service":"codex","state":"available","windows":)"
    R"([{"id":"primary","name":"Five-hour","usedFraction":0.42,"resetAt":785010000}]},)"
    R"({"service":"claude","state":"signInRequired","windows":[]}]})";

// A whole response of the widget feed, e.g. widgetFeedResponse("404 Not Found", "").
inline std::string widgetFeedResponse(const std::string& status, const std::string& body) {
    return "HTTP/1.1 " + status +
           "\r\nContent-Type: application/json\r\nCache-Control: no-store\r\nContent-Length: " +
           std::to_string(body.size()) + "\r\nConnection: close\r\n\r\n" + body;
}

} // namespace gaugewell::testing
