#pragma once

#include "ProviderKit/ClaudeSignIn/ClaudeOAuthSession.h"

namespace gaugewell {

// What the authentication manager asks of the Claude sign-in; a seam for its tests.
class ClaudeAccountAuthenticating {
public:
    virtual ~ClaudeAccountAuthenticating() = default;
    virtual bool isSignedIn() = 0;
    virtual bool login() = 0;  // true when a credential was stored
    virtual bool logout() = 0; // true when the credential is gone
    virtual void cancelLogin() = 0;
};

// The real one: the application's Claude OAuth session.
class ClaudeSessionAuthenticator final : public ClaudeAccountAuthenticating {
public:
    explicit ClaudeSessionAuthenticator(std::shared_ptr<ClaudeOAuthSession> session)
        : session(std::move(session)) {}

    bool isSignedIn() override { return session->isSignedIn(); }
    bool login() override { return session->login().hasValue(); }
    bool logout() override { return session->logout().hasValue(); }
    void cancelLogin() override { session->cancelLogin(); }

private:
    std::shared_ptr<ClaudeOAuthSession> session;
};

} // namespace gaugewell
