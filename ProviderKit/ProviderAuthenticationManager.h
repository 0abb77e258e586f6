#pragma once

#include "ClaudeAccountAuthenticating.h"
#include "CodexAccountAuthenticating.h"
#include "CommandRunning.h"
#include "Environment.h"
#include "ExecutableLocator.h"
#include "Platform/UserDefaults.h"
#include "ProviderAuthenticating.h"
#include "ProviderConnectionState.h"

#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace gaugewell {

// Whether each service is connected, and connecting or disconnecting it. Operations block,
// are serialised (a status check waits behind a running sign-in) and never throw: every
// outcome is a state with a fixed detail.
class ProviderAuthenticationManager final : public ProviderAuthenticating {
public:
    struct Dependencies {
        ExecutableLocator locator;
        std::shared_ptr<const CommandRunning> commandRunner;
        std::filesystem::path homeDirectory;
        std::map<ProviderService, std::filesystem::path> configuredExecutables;
        std::shared_ptr<UserDefaults> authorizationDefaults;
        std::string authorizationKeyPrefix = "connections.oauth-authorized.v2";
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
    std::mutex operation;
    std::optional<std::filesystem::path> appServerCapableCodexURL;
};

} // namespace gaugewell
