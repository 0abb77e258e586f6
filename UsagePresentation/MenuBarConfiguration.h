#pragma once

#include "MenuBarDensity.h"
#include "PercentageDisplayMode.h"
#include "Platform/SettingsKeys.h"
#include "UsageDomain/UsageEnumerations.h"

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace gaugewell {

class UserDefaults;

inline constexpr std::string_view defaultMenuProviderOrder = "codex,claude";

// The user's menu-bar choices. Read afresh from the settings at every status-item refresh.
struct MenuBarConfiguration {
    // Provider ids that may appear in the menu bar.
    std::set<std::string> enabledProviderIDs;
    // Preferred order of provider ids; may repeat an id when the stored order does.
    std::vector<std::string> providerOrder;
    bool iconsOnly = false;
    bool showPercentage = true;
    PercentageDisplayMode percentageMode = PercentageDisplayMode::consumed;
    bool showResetTime = true;
    // Absent: the most recently observed window of any kind.
    std::optional<UsageWindowKind> selectedWindowKind;
    MenuBarDensity density = MenuBarDensity::compact;

    static MenuBarConfiguration fromDefaults(const UserDefaults& defaults);

    bool operator==(const MenuBarConfiguration&) const = default;
};

// "codex,claude" -> provider ids; empty and unknown pieces are dropped, duplicates kept.
std::vector<std::string> providerOrderFromText(std::string_view text);

} // namespace gaugewell
