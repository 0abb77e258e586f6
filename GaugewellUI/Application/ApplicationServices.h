#pragma once

#include "Platform/FileUserDefaults.h"
#include "Platform/UserDefaults.h"
#include "ProviderKit/Authentication/ProviderAuthenticationManager.h"
#include "ProviderKit/ClaudeSignIn/ClaudeEndpoints.h"
#include "ProviderKit/ClaudeSignIn/ClaudeOAuthSession.h"
#include "ProviderKit/CodexSignIn/CodexOAuthSession.h"
#include "ProviderKit/GaugewellProvider.h"
#include "ProviderKit/Http/HttpClient.h"
#include "ProviderKit/Process/Environment.h"
#include "UsageDomain/Expected.h"

#include <functional>
#include <memory>
#include <string>

namespace gaugewell {

// The long-lived services of one Gaugewell process, wired for real: the settings file, the
// secret store, the HTTP client, both sign-in sessions, the authentication manager and both
// collectors. The tray app and the command line build it the same way.
struct ApplicationServices {
    using BrowserOpener = std::function<bool(const std::string& url)>;

    std::shared_ptr<UserDefaults> defaults;
    // The same store, for watching the file that backs it.
    std::shared_ptr<FileUserDefaults> settingsFile;
    std::shared_ptr<HttpClient> http;
    std::shared_ptr<ClaudeOAuthSession> claudeSession;
    std::shared_ptr<CodexOAuthSession> codexSession;
    std::shared_ptr<ProviderAuthenticationManager> authentication;
    PerService<std::shared_ptr<const GaugewellProvider>> collectors;

    // Fails only when an endpoint override in the environment is unusable; the text says which.
    static Expected<ApplicationServices, std::string> make(const Environment& environment,
                                                           BrowserOpener browserOpener);
};

// Hands a URL to the desktop's default browser through xdg-open; false when that failed
// or did not finish within a few seconds.
bool openWithDesktopBrowser(const std::string& url);

} // namespace gaugewell
