#pragma once

#include <array>
#include <optional>
#include <span>
#include <string_view>

namespace gaugewell {

// Every user-defaults key Gaugewell reads or writes. The menu bar, the refresh loop, the alerts,
// the settings window and `gaugewell config` all name keys through here.
namespace settingsKey {
inline constexpr std::string_view showCodex = "menu.showCodex";
inline constexpr std::string_view showClaude = "menu.showClaude";
inline constexpr std::string_view providerOrder = "menu.providerOrder";
inline constexpr std::string_view iconsOnly = "menu.iconsOnly";
inline constexpr std::string_view showPercentage = "menu.showPercentage";
inline constexpr std::string_view percentageMode = "menu.percentageMode";
inline constexpr std::string_view showReset = "menu.showReset";
inline constexpr std::string_view windowKind = "menu.windowKind";
inline constexpr std::string_view density = "menu.density";

inline constexpr std::string_view refreshActiveSeconds = "advanced.refreshActiveSeconds";
inline constexpr std::string_view refreshIdleSeconds = "advanced.refreshIdleSeconds";

inline constexpr std::string_view notificationsEnabled = "notifications.enabled";
inline constexpr std::string_view threshold50 = "notifications.threshold.50";
inline constexpr std::string_view threshold75 = "notifications.threshold.75";
inline constexpr std::string_view threshold90 = "notifications.threshold.90";
inline constexpr std::string_view threshold95 = "notifications.threshold.95";
inline constexpr std::string_view windowReset = "notifications.windowReset";

inline constexpr std::string_view onboardingCompleted = "onboarding.completed.v1";

// Followed by "." and the service's raw value: whether the user let Gaugewell read that account.
inline constexpr std::string_view oauthAuthorizedPrefix = "connections.oauth-authorized.v2";
} // namespace settingsKey

enum class SettingType { boolean, number, text };

// A setting the user may change, with what the settings window and `gaugewell config` need to
// show and check it. The connection flags are not listed: only sign-in and sign-out set them.
struct SettingDefinition {
    std::string_view key;
    SettingType type;
    // The value an absent key reads as (for texts, the text; for Booleans "true" or "false").
    std::string_view defaultValue;
    // Numbers: the range the settings window offers, in steps of `step`.
    double minimum = 0;
    double maximum = 0;
    double step = 0;
    // Texts with a fixed set of values; empty means free text.
    std::span<const std::string_view> choices = {};
};

namespace settingChoices {
inline constexpr std::array<std::string_view, 2> providerOrder{"codex,claude", "claude,codex"};
inline constexpr std::array<std::string_view, 2> percentageMode{"consumed", "remaining"};
inline constexpr std::array<std::string_view, 5> windowKind{"fiveHour", "sevenDay", "modelSpecific", "custom",
                                                            "unknown"};
inline constexpr std::array<std::string_view, 2> density{"compact", "detailed"};
} // namespace settingChoices

inline constexpr std::array<SettingDefinition, 18> settingDefinitions{{
    {settingsKey::showCodex, SettingType::boolean, "true"},
    {settingsKey::showClaude, SettingType::boolean, "true"},
    {settingsKey::providerOrder, SettingType::text, "codex,claude", 0, 0, 0, settingChoices::providerOrder},
    {settingsKey::iconsOnly, SettingType::boolean, "false"},
    {settingsKey::showPercentage, SettingType::boolean, "true"},
    {settingsKey::percentageMode, SettingType::text, "consumed", 0, 0, 0, settingChoices::percentageMode},
    {settingsKey::showReset, SettingType::boolean, "true"},
    {settingsKey::windowKind, SettingType::text, "fiveHour", 0, 0, 0, settingChoices::windowKind},
    {settingsKey::density, SettingType::text, "compact", 0, 0, 0, settingChoices::density},
    {settingsKey::refreshActiveSeconds, SettingType::number, "120", 120, 900, 60},
    {settingsKey::refreshIdleSeconds, SettingType::number, "600", 300, 3600, 60},
    {settingsKey::notificationsEnabled, SettingType::boolean, "false"},
    {settingsKey::threshold50, SettingType::boolean, "true"},
    {settingsKey::threshold75, SettingType::boolean, "true"},
    {settingsKey::threshold90, SettingType::boolean, "true"},
    {settingsKey::threshold95, SettingType::boolean, "true"},
    {settingsKey::windowReset, SettingType::boolean, "false"},
    {settingsKey::onboardingCompleted, SettingType::boolean, "false"},
}};

// The definition of a user-settable key; absent for anything else.
constexpr std::optional<SettingDefinition> settingDefinition(std::string_view key) {
    for (const auto& definition : settingDefinitions) {
        if (definition.key == key) {
            return definition;
        }
    }
    return std::nullopt;
}

} // namespace gaugewell
