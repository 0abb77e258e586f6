#include "MenuBarProjection.h"

#include "UsagePercentage.h"

#include <algorithm>
#include <map>

namespace gaugewell {

namespace {

// U+2014 EM DASH stands in for a percentage that is not known.
constexpr std::string_view unknownPercentage = "\u2014";
constexpr std::string_view noProviderLabel = "Gaugewell unavailable";

const UsageWindowSample* latestObserved(const std::vector<UsageWindowSample>& windows,
                                        std::optional<UsageWindowKind> kind) {
    const UsageWindowSample* latest = nullptr;
    for (const auto& window : windows) {
        if (kind && window.windowKind() != *kind) {
            continue;
        }
        if (latest == nullptr || window.observedAt() > latest->observedAt()) {
            latest = &window;
        }
    }
    return latest;
}

std::string joined(const std::vector<std::string>& parts, std::string_view separator) {
    std::string result;
    for (std::size_t index = 0; index < parts.size(); ++index) {
        if (index > 0) {
            result += separator;
        }
        result += parts[index];
    }
    return result;
}

struct EntryAndPhrase {
    MenuBarProjection::Entry entry;
    std::string phrase;
};

EntryAndPhrase describe(const ProviderMenuSnapshot& snapshot, const MenuBarConfiguration& configuration,
                        const ResetTimeFormatter& resetTimeFormatter) {
    const UsageWindowSample* window = menuBarWindow(snapshot.windows, configuration.selectedWindowKind);
    std::vector<std::string> parts;
    std::string phrase = snapshot.displayName;
    if (configuration.density == MenuBarDensity::detailed) {
        parts.push_back(snapshot.displayName);
    }
    if (configuration.showPercentage) {
        std::optional<std::int64_t> percentage;
        if (window != nullptr && window->usedFraction()) {
            percentage = displayedPercentage(*window->usedFraction(), configuration.percentageMode);
        }
        if (percentage) {
            const auto text = percentageText(*percentage);
            parts.push_back(text);
            phrase += ", " + text +
                      (configuration.percentageMode == PercentageDisplayMode::consumed ? " consumed"
                                                                                       : " remaining");
        } else {
            parts.emplace_back(unknownPercentage);
            phrase += ", usage unavailable";
        }
    }
    if (configuration.showResetTime && window != nullptr && window->resetAt()) {
        const auto time = resetTimeFormatter.format(*window->resetAt());
        parts.push_back(time);
        phrase += ", resets at " + time;
    }
    return {{snapshot.providerID, snapshot.displayName,
             configuration.iconsOnly ? std::string() : joined(parts, " ")},
            std::move(phrase)};
}

} // namespace

const UsageWindowSample* menuBarWindow(const std::vector<UsageWindowSample>& windows,
                                       std::optional<UsageWindowKind> selectedKind) {
    if (selectedKind) {
        if (const auto* window = latestObserved(windows, selectedKind)) {
            return window;
        }
    }
    return latestObserved(windows, std::nullopt);
}

MenuBarProjection MenuBarProjection::project(const std::vector<ProviderMenuSnapshot>& snapshots,
                                             const MenuBarConfiguration& configuration,
                                             const ResetTimeFormatter& resetTimeFormatter) {
    std::map<std::string_view, const ProviderMenuSnapshot*> byID;
    for (const auto& snapshot : snapshots) {
        byID.emplace(snapshot.providerID, &snapshot);
    }

    std::vector<std::string_view> order(configuration.providerOrder.begin(),
                                        configuration.providerOrder.end());
    for (const auto& snapshot : snapshots) {
        if (std::find(configuration.providerOrder.begin(), configuration.providerOrder.end(),
                      snapshot.providerID) == configuration.providerOrder.end()) {
            order.push_back(snapshot.providerID);
        }
    }

    MenuBarProjection projection;
    std::vector<std::string> phrases;
    // An id repeated in the stored order contributes each time it appears.
    for (const auto id : order) {
        const auto found = byID.find(id);
        if (found == byID.end() || !configuration.enabledProviderIDs.contains(std::string(id))) {
            continue;
        }
        auto described = describe(*found->second, configuration, resetTimeFormatter);
        projection.entries.push_back(std::move(described.entry));
        phrases.push_back(std::move(described.phrase));
    }
    projection.accessibilityLabel = phrases.empty() ? std::string(noProviderLabel) : joined(phrases, "; ");
    return projection;
}

} // namespace gaugewell
