#include "ConnectionPresenter.h"

#include "GaugewellUI/Support/Localizable.h"

namespace gaugewell {

ConnectionControl connectionControl(const ProviderConnectionState& state,
                                    std::optional<ProviderService> runningAction) {
    using Status = ProviderConnectionStatus;
    const bool ownActionRuns = runningAction == state.service;
    const bool otherActionRuns = runningAction && !ownActionRuns;
    if (ownActionRuns && state.status == Status::connecting) {
        return {Localizable::tr("Cancel"), Localizable::tr("Stop waiting for the sign-in in your browser"),
                true, ConnectionAction::cancelSignIn};
    }
    if (state.status == Status::signedIn || state.status == Status::disconnecting) {
        return {Localizable::tr("Disconnect"),
                Localizable::translated(std::string(facts(state.service).disconnectExplanation)),
                !runningAction && state.status == Status::signedIn, ConnectionAction::disconnect};
    }
    if (state.status == Status::notInstalled || state.status == Status::unsupportedVersion) {
        return {Localizable::tr("Connect"), Localizable::tr("Open the official Codex CLI installation guide"),
                true, ConnectionAction::openInstallGuide};
    }
    return {Localizable::tr("Connect"),
            Localizable::translated(std::string(facts(state.service).connectExplanation)),
            !otherActionRuns && !ownActionRuns && state.status != Status::checking,
            ConnectionAction::connect};
}

ConnectionBadgeContent connectionBadge(const ProviderConnectionState& state) {
    using Status = ProviderConnectionStatus;
    const QString text =
        state.detail ? Localizable::translated(*state.detail) : QString::fromUtf8(rawValue(state.status));
    switch (state.status) {
    case Status::signedIn:
        return {text, ConnectionTone::good};
    case Status::disconnected:
    case Status::signedOut:
    case Status::connecting:
    case Status::disconnecting:
        return {text, ConnectionTone::attention};
    case Status::notInstalled:
    case Status::unsupportedVersion:
    case Status::failed:
        return {text, ConnectionTone::problem};
    case Status::checking:
        break;
    }
    return {text, ConnectionTone::neutral};
}

} // namespace gaugewell
