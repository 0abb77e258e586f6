#include "ProviderKit/ClaudeSignIn/ClaudeCredentialStore.h"

#include "Platform/SecureWipe.h"

#include <algorithm>

namespace gaugewell {

ClaudeCredentialStore::ClaudeCredentialStore(std::shared_ptr<SecretStore> secrets, std::string service,
                                             std::string account)
    : secrets(std::move(secrets))
    , service_(std::move(service))
    , account_(std::move(account)) {}

Expected<std::optional<ClaudeOAuthCredential>, ClaudeOAuthError> ClaudeCredentialStore::load() const {
    auto loaded = secrets->load(service_, account_);
    if (!loaded) {
        return unexpected(ClaudeOAuthError::credentialStorageFailed);
    }
    std::optional<std::string> secret = std::move(loaded).value();
    if (!secret) {
        return std::optional<ClaudeOAuthCredential>();
    }
    auto credential = decodeJson<ClaudeOAuthCredential>(*secret);
    secureWipe(*secret);
    if (!credential) {
        return unexpected(ClaudeOAuthError::credentialStorageFailed);
    }
    return std::optional<ClaudeOAuthCredential>(std::move(credential).value());
}

Status<ClaudeOAuthError> ClaudeCredentialStore::save(const ClaudeOAuthCredential& credential) const {
    std::string json = encodeJson(credential).serialized();
    const auto saved = secrets->save(service_, account_, json);
    secureWipe(json);
    if (!saved) {
        return unexpected(ClaudeOAuthError::credentialStorageFailed);
    }
    return {};
}

Status<ClaudeOAuthError> ClaudeCredentialStore::remove() const {
    if (!secrets->remove(service_, account_)) {
        return unexpected(ClaudeOAuthError::credentialStorageFailed);
    }
    return {};
}

} // namespace gaugewell
