#include "PopoverPresenter.h"

#include "GaugewellUI/Support/Localizable.h"
#include "GaugewellUI/Views/DesignSystem/WindowTexts.h"
#include "UsagePresentation/RelativeTimeFormatter.h"

namespace gaugewell {

bool needsSignIn(const ProviderViewState& provider) {
    return provider.availability == ProviderAvailability::authenticationRequired ||
           provider.availability == ProviderAvailability::notInstalled ||
           provider.availability == ProviderAvailability::unsupportedVersion;
}

QString unavailableMessage(const ProviderViewState& provider) {
    switch (provider.availability) {
    case ProviderAvailability::notInstalled:
        return Localizable::tr("The Codex command-line tool was not found. Install it, then connect.");
    case ProviderAvailability::unsupportedVersion:
        return Localizable::tr("This Codex command-line tool is too old. Update it, then connect.");
    case ProviderAvailability::authenticationRequired:
        return Localizable::tr("Sign in to access this account's usage.");
    default:
        return Localizable::tr("Usage is not available yet.");
    }
}

QString refreshStatusLine(bool isRefreshing, std::optional<Date> lastUpdatedAt, Date now,
                          const RelativeTimeFormatter& relativeTime, bool withEllipsis) {
    if (isRefreshing) {
        return withEllipsis ? Localizable::tr("Refreshing…") : Localizable::tr("Refreshing");
    }
    if (!lastUpdatedAt) {
        return Localizable::tr("Awaiting data");
    }
    return formatted(Localizable::tr("Updated %@"),
                     {QString::fromStdString(relativeTime.format(*lastUpdatedAt, now))});
}

WindowRowContent presentWindowRow(const UsageWindowSample& window, Date now,
                                  const RelativeTimeFormatter& relativeTime) {
    WindowRowContent row;
    row.label = WindowTexts::label(window);
    if (window.usedFraction()) {
        row.usedFraction = window.usedFraction()->toDouble();
    }
    const QString used = WindowTexts::percentText(window, PercentageDisplayMode::consumed);
    row.usedText = window.usedFraction() ? formatted(Localizable::tr("%@ used"), {used})
                                         : Localizable::tr("Usage unavailable");
    row.remainingText = WindowTexts::percentText(window, PercentageDisplayMode::remaining);
    row.resetText = WindowTexts::resetText(window, now, relativeTime);
    row.resetTooltip = WindowTexts::periodTooltip(window);
    if (WindowTexts::hasNotStarted(window)) {
        row.hint = WindowTexts::notStartedHint();
    }
    row.badge = WindowTexts::freshnessBadge(window);
    row.accessibleText = WindowTexts::accessibleDescription(window, now, relativeTime);
    return row;
}

PopoverContent presentPopover(const PopoverInputs& inputs, Date now,
                              const RelativeTimeFormatter& relativeTime) {
    PopoverContent content;
    content.statusLine =
        refreshStatusLine(inputs.isRefreshing, inputs.lastUpdatedAt, now, relativeTime, true);
    content.showsEmptyState = !inputs.showCodex && !inputs.showClaude;
    for (const auto& provider : inputs.providers) {
        const bool shown = provider.service == ProviderService::codex ? inputs.showCodex : inputs.showClaude;
        if (!shown) {
            continue;
        }
        ProviderCardContent card{provider.service,
                                 QString::fromStdString(provider.descriptor.displayName()),
                                 {},
                                 std::nullopt,
                                 false};
        for (const auto& window : provider.currentWindows()) {
            card.rows.push_back(presentWindowRow(window, now, relativeTime));
        }
        if (card.rows.empty()) {
            card.offersConnect = needsSignIn(provider);
            card.unavailableMessage = unavailableMessage(provider);
        }
        content.cards.push_back(std::move(card));
    }
    return content;
}

} // namespace gaugewell
