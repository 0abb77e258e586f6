#include "ClaudeCredentialStore.h"

#include <algorithm>

namespace gaugewell {

ClaudeCredentialStore::ClaudeCredentialStore(std::shared_ptr<SecretStore> secrets, std::string service,
                                             std::string account)
    : secrets(std::move(secrets))
    , service_(std::move(service))
    , account_(std::move(account)) {}

Expected<std::optional<ClaudeOAuthCredential>, ClaudeOAuthError> ClaudeCredentialStore::load() const {
    auto loaded = secrets->load(service_, account_);
    if (loaded.error) {
        return unexpected(ClaudeOAuthError::credentialStorageFailed);
    }
    if (!loaded.secret) {
        return std::optional<ClaudeOAuthCredential>();
    }
    auto credential = decodeJson<ClaudeOAuthCredential>(*loaded.secret);
    std::fill(loaded.secret->begin(), loaded.secret->end(), '\0');
    if (!credential) {
        return unexpected(ClaudeOAuthError::credentialStorageFailed);
    }
    return std::optional<ClaudeOAuthCredential>(std::move(credential).value());
}

Expected<std::monostate, ClaudeOAuthError>
ClaudeCredentialStore::save(const ClaudeOAuthCredential& credential) const {
    std::string json = encodeJson(credential).serialized();
    const auto status = secrets->save(service_, account_, json);
    std::fill(json.begin(), json.end(), '\0');
    if (status) {
        return unexpected(ClaudeOAuthError::credentialStorageFailed);
    }
    return std::monostate{};
}

Expected<std::monostate, ClaudeOAuthError> ClaudeCredentialStore::remove() const {
    if (secrets->remove(service_, account_)) {
        return unexpected(ClaudeOAuthError::credentialStorageFailed);
    }
    return std::monostate{};
}

} // namespace gaugewell
