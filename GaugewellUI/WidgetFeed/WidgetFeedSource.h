#pragma once

#include "GaugewellUI/Model/UsageAppModel.h"
#include "WidgetLiveServer.h"

#include <chrono>

namespace gaugewell {

// What the feed serves: the model's snapshot, refreshed first only when the last refresh is older
// than `maximumAge`, and then without touching a provider that is backing off. A widget polling
// every second thus costs one collection a minute at most, and never an early retry after a
// failure or a rate limit.
WidgetLiveServer::SnapshotSource widgetFeedSource(UsageAppModel& model,
                                                  std::chrono::seconds maximumAge = std::chrono::seconds(60));

} // namespace gaugewell
