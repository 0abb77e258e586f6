#pragma once

#include "UsageDomain/UsageWindowSample.h"
#include "UsagePresentation/PercentageDisplayMode.h"

#include <QString>
#include <optional>

namespace gaugewell {

class RelativeTimeFormatter;

// The words every window uses for one allowance window. Plain functions, translated through the
// "Localizable" table; the views only lay them out.
namespace WindowTexts {

// "Session", "Weekly", "Model", "Custom", "Window".
QString kindName(UsageWindowKind kind);
// The kind's name for the session and weekly windows, the same for every provider; for the others
// the provider's own name ("Opus weekly") when it gives one, which tells apart two of a kind.
QString label(const UsageWindowSample& window);

// A window without a reset time has not started when it reports nothing used yet; otherwise its
// reset is simply not known.
bool hasNotStarted(const UsageWindowSample& window);
// "Resets in 2 hr.", "Not started" or "Unknown".
QString resetText(const UsageWindowSample& window, Date now, const RelativeTimeFormatter& relativeTime);
// "No active session yet — the window starts with your next request."
QString notStartedHint();
// "this Session window"
QString thisWindowPhrase(const UsageWindowSample& window);
// "This window runs 10:45 AM – 3:45 PM", or "No reset time reported" without a reset and length.
QString periodTooltip(const UsageWindowSample& window);

// "42%" of the used (or remaining) share; the dash when the share is not known.
QString percentText(const UsageWindowSample& window, PercentageDisplayMode mode);
// The whole used percentage, when known and representable.
std::optional<int> usedPercent(const UsageWindowSample& window);
// "Session, 42% used, resets in 2 hr." ("no data" in place of a missing share).
QString accessibleDescription(const UsageWindowSample& window, Date now,
                              const RelativeTimeFormatter& relativeTime);
// A ring's value: "42 percent Session", or "Usage unavailable".
QString ringAccessibleValue(std::optional<int> percent, const QString& caption);

// "CACHED" for a provider's cached figure, "recent", "stale", "unknown"; nothing for a live one.
std::optional<QString> freshnessBadge(const UsageWindowSample& window);

} // namespace WindowTexts

} // namespace gaugewell
