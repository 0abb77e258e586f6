#pragma once

#include "GaugewellUI/Model/ProviderViewState.h"
#include "ProviderKit/Authentication/ProviderConnectionState.h"

#include <QString>
#include <optional>
#include <vector>

namespace gaugewell {

class RelativeTimeFormatter;

// What one allowance window row of the popup says.
struct WindowRowContent {
    QString label; // "Session"
    std::optional<double> usedFraction;
    QString usedText;            // "42% used", or "Usage unknown"
    QString remainingText;       // "58%", or the dash
    QString resetText;           // "Resets in 2 hr.", "Not started", "Unknown"
    QString resetTooltip;        // "This window runs ...", "No reset time reported"
    std::optional<QString> hint; // for a window that has not started
    std::optional<QString> badge;
    QString accessibleText;

    bool operator==(const WindowRowContent&) const = default;
};

// One provider's card: its windows, or why there are none.
struct ProviderCardContent {
    ProviderService service;
    QString name;
    std::vector<WindowRowContent> rows;
    // Without windows: "Usage Unavailable" and why, with a connect button when a sign-in would help.
    std::optional<QString> unavailableMessage;
    bool offersConnect = false;

    bool operator==(const ProviderCardContent&) const = default;
};

struct PopoverContent {
    QString statusLine; // "Refreshing…", "Updated 2 min. ago", "Awaiting data"
    std::vector<ProviderCardContent> cards;
    bool showsEmptyState = false; // both providers hidden

    bool operator==(const PopoverContent&) const = default;
};

struct PopoverInputs {
    const std::vector<ProviderViewState>& providers;
    bool isRefreshing;
    std::optional<Date> lastUpdatedAt;
    bool showCodex;
    bool showClaude;
};

// What the popup shows, decided without widgets.
PopoverContent presentPopover(const PopoverInputs& inputs, Date now,
                              const RelativeTimeFormatter& relativeTime);

// Whether a provider without windows needs a sign-in (so its card offers the connect button).
bool needsSignIn(const ProviderViewState& provider);
// The sentence on a card without windows: what is missing and what to do.
QString unavailableMessage(const ProviderViewState& provider);

// "Updated 2 min. ago" / "Refreshing…" / "Awaiting data": shared with the dashboard's header.
QString refreshStatusLine(bool isRefreshing, std::optional<Date> lastUpdatedAt, Date now,
                          const RelativeTimeFormatter& relativeTime, bool withEllipsis);

WindowRowContent presentWindowRow(const UsageWindowSample& window, Date now,
                                  const RelativeTimeFormatter& relativeTime);

} // namespace gaugewell
