#pragma once

#include "NotificationBackend.h"
#include "UsageAlertEvaluator.h"
#include "UsageDomain/UsageWindowSample.h"

#include <string>

namespace gaugewell {

// The window's label in alerts: the provider's bucket name when it gave one, otherwise a name for
// the kind ("Session", "Weekly", the model id, "Custom", "Window"). Fixed names and bucket names
// go through the string table.
std::string alertWindowName(const UsageWindowSample& window);

// The localized title and body of an event's notification, with a fresh "usage." identifier.
NotificationRequest usageNotificationRequest(const UsageAlertEvent& event);

} // namespace gaugewell
