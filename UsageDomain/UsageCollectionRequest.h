#pragma once

#include "Date.h"
#include "Uuid.h"

namespace gaugewell {

// What the coordinator asks of one collection: the connection to file records under and the refresh moment.
class UsageCollectionRequest {
public:
    UsageCollectionRequest(Uuid connectionID, Date observedAt)
        : connectionID_(connectionID)
        , observedAt_(observedAt) {}

    const Uuid& connectionID() const { return connectionID_; }
    Date observedAt() const { return observedAt_; }

private:
    Uuid connectionID_;
    Date observedAt_;
};

} // namespace gaugewell
