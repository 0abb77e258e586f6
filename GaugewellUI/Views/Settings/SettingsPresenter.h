#pragma once

#include "GaugewellUI/Model/ProviderViewState.h"
#include "GaugewellUI/Notifications/UsageNotificationController.h"
#include "Platform/SettingsKeys.h"

#include <QString>
#include <optional>
#include <string>
#include <vector>

namespace gaugewell {

// The settings window's decisions, without widgets.
namespace SettingsPresenter {

// The provider-order picker's choice for a stored order: 0 "Codex, then Claude" (also when none is
// stored), 1 "Claude, then Codex", none for anything else (e.g. "claude" alone).
std::optional<int> providerOrderChoice(const std::optional<std::string>& stored);
// "Reverse": "claude,codex" when the order is exactly "codex,claude", otherwise "codex,claude".
std::string reversedProviderOrder(const std::optional<std::string>& stored);

// A refresh stepper's minutes: the stored seconds (the default when absent or not above zero),
// clamped to the setting's range, divided by 60 and truncated.
int stepperMinutes(const SettingDefinition& setting, double storedSeconds);

// The note under the notification switches.
QString permissionNote(UsageNotificationPermission permission);

struct DiagnosticLine {
    DiagnosticSeverity severity;
    QString code;
    QString message;

    bool operator==(const DiagnosticLine&) const = default;
};

struct ProviderDiagnostics {
    QString name;
    std::vector<DiagnosticLine> lines; // empty: "No issues reported."

    bool operator==(const ProviderDiagnostics&) const = default;
};

// The diagnostics section: empty before the first refresh ("Diagnostics appear after the first refresh.").
std::vector<ProviderDiagnostics> diagnostics(const std::vector<ProviderViewState>& providers);

} // namespace SettingsPresenter

} // namespace gaugewell
