#pragma once

#include "Platform/UserDefaults.h"
#include "ProviderKit/ClaudeEndpoints.h"
#include "ProviderKit/ClaudeOAuthSession.h"
#include "ProviderKit/CodexOAuthSession.h"
#include "ProviderKit/Environment.h"
#include "ProviderKit/GaugewellProvider.h"
#include "ProviderKit/HttpClient.h"
#include "ProviderKit/ProviderAuthenticationManager.h"
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
    std::shared_ptr<HttpClient> http;
    std::shared_ptr<ClaudeOAuthSession> claudeSession;
    std::shared_ptr<CodexOAuthSession> codexSession;
    std::shared_ptr<ProviderAuthenticationManager> authentication;
    std::shared_ptr<const GaugewellProvider> codexCollector;
    std::shared_ptr<const GaugewellProvider> claudeCollector;

    // Fails only when an endpoint override in the environment is unusable; the text says which.
    static Expected<ApplicationServices, std::string> make(const Environment& environment,
                                                           BrowserOpener browserOpener);
};

// Hands a URL to the desktop's default browser through xdg-open; false when that failed
// or did not finish within a few seconds.
bool openWithDesktopBrowser(const std::string& url);

} // namespace gaugewell
