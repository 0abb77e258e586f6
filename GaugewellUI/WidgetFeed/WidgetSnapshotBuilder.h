#pragma once

#include "GaugewellUI/Model/ProviderViewState.h"
#include "GaugewellUI/Model/UsageAppModel.h"
#include "GaugewellWidgetSupport/WidgetUsageSnapshot.h"
#include "ProviderKit/Authentication/ProviderConnectionState.h"

#include <map>
#include <optional>
#include <string_view>
#include <vector>

namespace gaugewell {

// Turns the model's state into what the desktop widget shows. Pure: no refresh, no clock.
namespace WidgetSnapshotBuilder {

// What the model holds now.
WidgetUsageSnapshot build(const UsageAppModel& model);

// One entry per service, codex then claude, whatever the menu-bar settings. `updatedAt` is
// `lastUpdatedAt`, or `now` before the first refresh has been published. A service without a
// connection state counts as still being checked, that is, not signed in.
WidgetUsageSnapshot build(const std::vector<ProviderViewState>& providers,
                          const std::map<ProviderService, ProviderConnectionState>& connectionStates,
                          std::optional<Date> lastUpdatedAt, Date now);

// The widget's form of one sample; absent when the sample has neither a used nor a remaining share.
std::optional<WidgetWindow> widgetWindow(const UsageWindowSample& sample);

// The label of a window whose provider gave it no name.
std::string_view defaultWindowName(UsageWindowKind kind);

} // namespace WidgetSnapshotBuilder

} // namespace gaugewell
