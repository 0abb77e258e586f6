#pragma once

#include "ProviderKit/ClaudeSignIn/ClaudeAccessTokenSource.h"
#include "ProviderKit/ClaudeSignIn/ClaudeCredentialStore.h"
#include "ProviderKit/ClaudeSignIn/ClaudeEndpoints.h"
#include "ProviderKit/Http/HttpClient.h"
#include "UsageDomain/Date.h"

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace gaugewell {

class OAuthLoopbackServer;

// The application's own Claude sign-in: a browser authorization with PKCE (S256) and a loopback
// redirect, the credential in the secret store, access tokens refreshed shortly before they expire,
// and sign-out with revocation. Public operations block and are serialised: one at a time per session,
// so two refreshes never overlap. Call them from worker threads, never from a UI thread.
class ClaudeOAuthSession final : public ClaudeAccessTokenSource {
public:
    // Opens the URL in the user's browser; false when that could not be done.
    using BrowserOpener = std::function<bool(const std::string& url)>;
    using Clock = std::function<Date()>;

    static constexpr std::string_view clientID = "3f6b8e21-7c4d-4a9e-b5f0-2d81c6a9e047";
    static const std::vector<std::string>& scopes();
    static constexpr std::chrono::seconds redirectTimeout{300};
    static constexpr std::chrono::seconds tokenRequestTimeout{60};
    static constexpr std::chrono::seconds refreshMargin{300};
    static constexpr std::size_t maximumTokenResponseBytes = 256 * 1024;

    ClaudeOAuthSession(ClaudeCredentialStore store, std::shared_ptr<HttpClient> http,
                       ClaudeEndpoints endpoints, BrowserOpener openBrowser,
                       Clock now = &std::chrono::system_clock::now);
    ~ClaudeOAuthSession() override;

    bool isSignedIn() override;
    Expected<std::string, ClaudeOAuthError> validAccessToken() override;

    // Blocks until the browser comes back (at most 300 s), the sign-in fails, or `cancelLogin` is called.
    // Nothing is stored unless every step succeeded.
    Status<ClaudeOAuthError> login();
    // Revokes the refresh token (its outcome is ignored) and deletes the credential.
    Status<ClaudeOAuthError> logout();
    // Ends a running `login` with `callbackFailed`: its listener is closed and nothing is stored.
    // Does nothing when no sign-in is running. Safe from any thread (not from a signal handler).
    void cancelLogin();

    // The authorization page's URL with the query items in their fixed order.
    static std::string authorizationURL(const ClaudeEndpoints& endpoints, std::string_view redirectURI,
                                        std::string_view codeChallenge, std::string_view state);

private:
    Status<ClaudeOAuthError> runLogin();

    const ClaudeCredentialStore store;
    const std::shared_ptr<HttpClient> http;
    const ClaudeEndpoints endpoints;
    const BrowserOpener openBrowser;
    const Clock now;

    std::mutex operationMutex; // held for the whole of each public operation

    // Guards only the running sign-in's cancellation; never held across a blocking call.
    std::mutex loginMutex;
    bool loginRunning = false;
    bool loginCancelled = false;
    OAuthLoopbackServer* activeServer = nullptr;
};

} // namespace gaugewell
