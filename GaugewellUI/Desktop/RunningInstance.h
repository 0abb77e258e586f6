#pragma once

#include "ApplicationAction.h"
#include "UsageDomain/Expected.h"

#include <QDBusConnection>
#include <chrono>
#include <optional>
#include <string_view>

namespace gaugewell {

enum class RunningInstanceError { noSessionBus, notRunning, refused, timedOut };

std::string_view describe(RunningInstanceError error);

// Asks the Gaugewell that runs in this session to act: `Activate` without a request, else
// `ActivateAction`. Blocks for at most `timeout`, running a local event loop, so it also works
// from a process that has not started its own. Never starts an instance.
Status<RunningInstanceError> askRunningInstance(const std::optional<ApplicationRequest>& request,
                                                QDBusConnection bus = QDBusConnection::sessionBus(),
                                                std::chrono::milliseconds timeout = std::chrono::seconds(5));

} // namespace gaugewell
