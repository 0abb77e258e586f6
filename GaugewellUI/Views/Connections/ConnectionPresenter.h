#pragma once

#include "ProviderKit/Authentication/ProviderConnectionState.h"

#include <QString>
#include <optional>
#include <string_view>

namespace gaugewell {

// Where the Codex command-line tool's official installation guide lives.
inline constexpr std::string_view codexInstallGuideURL = "https://github.com/openai/codex#quickstart";

enum class ConnectionAction { connect, disconnect, cancelSignIn, openInstallGuide, none };

// What a service's connect button says and does, from its connection state and the sign-in or
// sign-out that may be running (for this service or the other: one at a time).
struct ConnectionControl {
    QString title;
    QString help;
    bool enabled = true;
    ConnectionAction action = ConnectionAction::none;

    bool operator==(const ConnectionControl&) const = default;
};

enum class ConnectionTone { neutral, good, attention, problem };

// The badge beside a service: the state's own sentence and a colour for it.
struct ConnectionBadgeContent {
    QString text;
    ConnectionTone tone = ConnectionTone::neutral;

    bool operator==(const ConnectionBadgeContent&) const = default;
};

ConnectionControl connectionControl(const ProviderConnectionState& state,
                                    std::optional<ProviderService> runningAction);
ConnectionBadgeContent connectionBadge(const ProviderConnectionState& state);

} // namespace gaugewell
