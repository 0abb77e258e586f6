#pragma once

#include "Platform/SecretStore.h"
#include "ProviderKit/ClaudeSignIn/ClaudeOAuthCredential.h"
#include "ProviderKit/ClaudeSignIn/ClaudeOAuthError.h"
#include "UsageDomain/Expected.h"

#include <memory>
#include <optional>
#include <string>

namespace gaugewell {

// The Claude credential as one secret (its JSON form) in the user's secret store. Every failure,
// including stored data that does not decode, is `credentialStorageFailed`.
class ClaudeCredentialStore {
public:
    static constexpr std::string_view defaultService = "app.gaugewell.claude.oauth";
    static constexpr std::string_view defaultAccount = "primary";

    explicit ClaudeCredentialStore(std::shared_ptr<SecretStore> secrets,
                                   std::string service = std::string(defaultService),
                                   std::string account = std::string(defaultAccount));

    const std::string& service() const { return service_; }
    const std::string& account() const { return account_; }

    // Absent when nothing is stored.
    Expected<std::optional<ClaudeOAuthCredential>, ClaudeOAuthError> load() const;
    // Replaces any earlier credential.
    Status<ClaudeOAuthError> save(const ClaudeOAuthCredential& credential) const;
    // Removing a credential that does not exist succeeds.
    Status<ClaudeOAuthError> remove() const;

private:
    std::shared_ptr<SecretStore> secrets;
    std::string service_;
    std::string account_;
};

} // namespace gaugewell
