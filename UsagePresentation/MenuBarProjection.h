#pragma once

#include "MenuBarConfiguration.h"
#include "ProviderMenuSnapshot.h"
#include "ResetTimeFormatter.h"

#include <string>
#include <vector>

namespace gaugewell {

// What the status item shows: one short text per visible provider and one sentence for
// screen readers. Recomputed from scratch; equality lets the status item skip redrawing.
struct MenuBarProjection {
    struct Entry {
        std::string providerID;
        std::string displayName;
        std::string text;

        bool operator==(const Entry&) const = default;
    };

    std::vector<Entry> entries;
    std::string accessibilityLabel;

    static MenuBarProjection project(const std::vector<ProviderMenuSnapshot>& snapshots,
                                     const MenuBarConfiguration& configuration,
                                     const ResetTimeFormatter& resetTimeFormatter);

    bool operator==(const MenuBarProjection&) const = default;
};

// The window the menu bar shows for one provider: the latest observed window of the selected
// kind, or of any kind when none has it; the first in list order on equal times.
const UsageWindowSample* menuBarWindow(const std::vector<UsageWindowSample>& windows,
                                       std::optional<UsageWindowKind> selectedKind);

} // namespace gaugewell
