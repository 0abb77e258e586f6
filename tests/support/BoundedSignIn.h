#pragma once

#include "ProviderKit/ClaudeSignIn/ClaudeOAuthSession.h"

#include <chrono>
#include <future>
#include <gtest/gtest.h>

namespace gaugewell::testing {

// A sign-in that fails the test instead of waiting the full 300 s when the browser never comes back.
inline Status<ClaudeOAuthError> signInWithin(ClaudeOAuthSession& session, std::chrono::seconds limit) {
    auto login = std::async(std::launch::async, [&] { return session.login(); });
    if (login.wait_for(limit) != std::future_status::ready) {
        ADD_FAILURE() << "the browser did not complete the redirect within " << limit.count() << " s";
        session.cancelLogin();
    }
    return login.get();
}

} // namespace gaugewell::testing
