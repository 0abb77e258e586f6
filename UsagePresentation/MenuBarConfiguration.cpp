#include "MenuBarConfiguration.h"

#include "Platform/UserDefaults.h"
#include "ProviderKit/Authentication/ProviderService.h"

namespace gaugewell {

namespace {

// A setting that defaults to true turns off only through a stored Boolean false.
bool enabledUnlessStoredFalse(const UserDefaults& defaults, std::string_view key) {
    return defaults.storedBool(std::string(key)).value_or(true);
}

} // namespace

std::vector<std::string> providerOrderFromText(std::string_view text) {
    std::vector<std::string> order;
    std::size_t start = 0;
    while (start <= text.size()) {
        const std::size_t comma = std::min(text.find(',', start), text.size());
        const auto piece = text.substr(start, comma - start);
        if (const auto service = fromRawValue<ProviderService>(piece)) {
            order.emplace_back(providerID(*service));
        }
        start = comma + 1;
    }
    return order;
}

MenuBarConfiguration MenuBarConfiguration::fromDefaults(const UserDefaults& defaults) {
    MenuBarConfiguration configuration;
    if (enabledUnlessStoredFalse(defaults, settingsKey::showCodex)) {
        configuration.enabledProviderIDs.emplace(codexProviderID);
    }
    if (enabledUnlessStoredFalse(defaults, settingsKey::showClaude)) {
        configuration.enabledProviderIDs.emplace(claudeProviderID);
    }
    const auto order = defaults.stringValue(std::string(settingsKey::providerOrder));
    configuration.providerOrder = providerOrderFromText(order ? *order : defaultMenuProviderOrder);
    configuration.iconsOnly = defaults.boolValue(std::string(settingsKey::iconsOnly));
    configuration.showPercentage = enabledUnlessStoredFalse(defaults, settingsKey::showPercentage);
    configuration.percentageMode =
        defaults.stringValue(std::string(settingsKey::percentageMode)) == "remaining"
            ? PercentageDisplayMode::remaining
            : PercentageDisplayMode::consumed;
    configuration.showResetTime = enabledUnlessStoredFalse(defaults, settingsKey::showReset);
    const auto kind = defaults.stringValue(std::string(settingsKey::windowKind));
    configuration.selectedWindowKind =
        (kind ? fromRawValue<UsageWindowKind>(*kind) : std::nullopt).value_or(UsageWindowKind::fiveHour);
    configuration.density = defaults.stringValue(std::string(settingsKey::density)) == "detailed"
                                ? MenuBarDensity::detailed
                                : MenuBarDensity::compact;
    return configuration;
}

} // namespace gaugewell
