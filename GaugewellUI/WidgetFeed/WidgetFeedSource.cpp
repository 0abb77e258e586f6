#include "WidgetFeedSource.h"

#include "WidgetSnapshotBuilder.h"

namespace gaugewell {

WidgetLiveServer::SnapshotSource widgetFeedSource(UsageAppModel& model, std::chrono::seconds maximumAge) {
    return [&model, maximumAge](WidgetLiveServer::SnapshotReply reply) {
        model.afterRecentRefresh(maximumAge, [&model, reply = std::move(reply)](bool refreshed) {
            reply(refreshed ? std::optional(WidgetSnapshotBuilder::build(model)) : std::nullopt);
        });
    };
}

} // namespace gaugewell
