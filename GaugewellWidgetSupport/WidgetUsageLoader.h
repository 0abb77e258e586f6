#pragma once

#include "WidgetFeedEndpoint.h"
#include "WidgetUsageSnapshot.h"

#include <functional>

namespace gaugewell {

using WidgetFetchResult = WidgetResult<WidgetUsageSnapshot, WidgetFetchError>;

// What a widget needs: a way to get the snapshot and the current time. Tests and previews build
// one from any two functions; `live` asks the running application.
class WidgetUsageLoader {
public:
    using Fetch = std::function<WidgetFetchResult()>;
    using Now = std::function<WidgetDate()>;

    WidgetUsageLoader(Fetch fetch, Now now)
        : fetch_(std::move(fetch))
        , now_(std::move(now)) {}

    // Blocks for at most the endpoint's time-out; callable from any thread.
    WidgetFetchResult fetch() const { return fetch_(); }
    WidgetDate now() const { return now_(); }

    static WidgetUsageLoader live();
    static WidgetUsageLoader live(WidgetFeedEndpoint endpoint);

private:
    Fetch fetch_;
    Now now_;
};

// One GET of the feed: status 200 and a snapshot body, or the reason why not. No retries.
WidgetFetchResult fetchWidgetUsageSnapshot(const WidgetFeedEndpoint& endpoint);

} // namespace gaugewell
