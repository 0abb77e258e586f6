#pragma once

#include "Platform/SettingsKeys.h"
#include "Platform/UserDefaults.h"
#include "ProviderKit/Authentication/ProviderAuthenticating.h"
#include "ProviderKit/Authentication/ProviderConnectionState.h"
#include "ProviderKit/ClaudeSignIn/ClaudeAccountAuthenticating.h"
#include "ProviderKit/CodexSignIn/CodexAccountAuthenticating.h"
#include "ProviderKit/Process/CommandRunning.h"
#include "ProviderKit/Process/Environment.h"
#include "ProviderKit/Process/ExecutableLocator.h"

#include <array>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace gaugewell {

// Whether each service is connected, and connecting or disconnecting it. Operations block and
// never throw: every outcome is a state with a fixed detail. They are serialised per service (a
// status check waits behind that service's running sign-in); the two services run side by side.
class ProviderAuthenticationManager final : public ProviderAuthenticating {
public:
    struct Dependencies {
        ExecutableLocator locator;
        std::shared_ptr<const CommandRunning> commandRunner;
        std::filesystem::path homeDirectory;
        std::map<ProviderService, std::filesystem::path> configuredExecutables;
        std::shared_ptr<UserDefaults> authorizationDefaults;
        std::string authorizationKeyPrefix = std::string(settingsKey::oauthAuthorizedPrefix);
        std::shared_ptr<ClaudeAccountAuthenticating> claude;
        std::shared_ptr<CodexAccountAuthenticating> codex;
        Environment processEnvironment; // the application's own, unfiltered
    };

    explicit ProviderAuthenticationManager(Dependencies dependencies);

    ProviderConnectionState status(ProviderService service) override;
    ProviderConnectionState login(ProviderService service) override;
    ProviderConnectionState disconnect(ProviderService service) override;

    // Ends a sign-in in progress (either service) from any thread; it then reports `failed`.
    void cancelLogin() override;

    // "connections.oauth-authorized.v2.codex": the user let Gaugewell read the Codex account.
    std::string codexAuthorizationKey() const;

private:
    struct LocatedCodex {
        std::filesystem::path executable;
        Environment environment;
    };
    std::optional<LocatedCodex> locateCodex() const;
    bool isAppServerCapable(const LocatedCodex& codex);
    ProviderConnectionState codexLoginStatus();

    Dependencies dependencies;
    std::array<std::mutex, allProviderServices.size()> operations;
    std::optional<std::filesystem::path> appServerCapableCodexURL;
};

} // namespace gaugewell
