#include "SettingsPresenter.h"

#include "GaugewellUI/Support/Localizable.h"

#include <algorithm>

namespace gaugewell::SettingsPresenter {

std::optional<int> providerOrderChoice(const std::optional<std::string>& stored) {
    const std::string order = stored.value_or(std::string(settingChoices::providerOrder[0]));
    for (std::size_t index = 0; index < settingChoices::providerOrder.size(); ++index) {
        if (order == settingChoices::providerOrder[index]) {
            return static_cast<int>(index);
        }
    }
    return std::nullopt;
}

std::string reversedProviderOrder(const std::optional<std::string>& stored) {
    return stored.value_or("codex,claude") == "codex,claude" ? "claude,codex" : "codex,claude";
}

int stepperMinutes(const SettingDefinition& setting, double storedSeconds) {
    const double seconds = storedSeconds > 0 ? storedSeconds : std::stod(std::string(setting.defaultValue));
    return static_cast<int>(std::clamp(seconds, setting.minimum, setting.maximum) / 60);
}

QString permissionNote(UsageNotificationPermission permission) {
    switch (permission) {
    case UsageNotificationPermission::unavailable:
        return Localizable::tr("Unavailable in this build");
    case UsageNotificationPermission::notRequested:
        return Localizable::tr("Permission will be requested when enabled");
    case UsageNotificationPermission::denied:
        return Localizable::tr("Notifications are turned off on this desktop");
    case UsageNotificationPermission::allowed:
        break;
    }
    return Localizable::tr("Only newly crossed thresholds are announced");
}

std::vector<ProviderDiagnostics> diagnostics(const std::vector<ProviderViewState>& providers) {
    std::vector<ProviderDiagnostics> result;
    for (const auto& provider : providers) {
        ProviderDiagnostics entry{QString::fromStdString(provider.descriptor.displayName()), {}};
        for (const auto& diagnostic : provider.diagnostics) {
            entry.lines.push_back({diagnostic.severity(), QString::fromStdString(diagnostic.code()),
                                   Localizable::translated(diagnostic.message())});
        }
        result.push_back(std::move(entry));
    }
    return result;
}

} // namespace gaugewell::SettingsPresenter
