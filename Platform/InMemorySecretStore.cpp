#include "InMemorySecretStore.h"

namespace gaugewell {

Expected<std::optional<std::string>, SecretStoreError> InMemorySecretStore::load(std::string_view service,
                                                                                 std::string_view account) {
    std::lock_guard lock(mutex);
    if (failure) {
        return unexpected(*failure);
    }
    const auto found = items.find({std::string(service), std::string(account)});
    if (found == items.end()) {
        return std::optional<std::string>();
    }
    return std::optional<std::string>(found->second);
}

Status<SecretStoreError> InMemorySecretStore::save(std::string_view service, std::string_view account,
                                                   std::string_view secret) {
    std::lock_guard lock(mutex);
    if (failure) {
        return unexpected(*failure);
    }
    items[{std::string(service), std::string(account)}] = std::string(secret);
    return {};
}

Status<SecretStoreError> InMemorySecretStore::remove(std::string_view service, std::string_view account) {
    std::lock_guard lock(mutex);
    if (failure) {
        return unexpected(*failure);
    }
    items.erase({std::string(service), std::string(account)});
    return {};
}

void InMemorySecretStore::setFailure(std::optional<SecretStoreError> newFailure) {
    std::lock_guard lock(mutex);
    failure = newFailure;
}

std::size_t InMemorySecretStore::itemCount() const {
    std::lock_guard lock(mutex);
    return items.size();
}

} // namespace gaugewell
