#pragma once

#include "ProviderKit/CodexSignIn/CodexOAuthError.h"
#include "ProviderKit/Process/Environment.h"

#include <filesystem>
#include <optional>

namespace gaugewell {

// Signs the user in to or out of Codex through the tool itself; Codex keeps its own credentials.
// Both block until done; absent means success.
class CodexAccountAuthenticating {
public:
    virtual ~CodexAccountAuthenticating() = default;
    virtual std::optional<CodexOAuthError> login(const std::filesystem::path& executable,
                                                 const Environment& environment) = 0;
    virtual std::optional<CodexOAuthError> logout(const std::filesystem::path& executable,
                                                  const Environment& environment) = 0;
    // Ends a call in progress from another thread; the call then returns an error.
    virtual void cancel() = 0;
};

} // namespace gaugewell
