#include "InMemorySecretStore.h"

namespace gaugewell {

SecretLoadResult InMemorySecretStore::load(std::string_view service, std::string_view account) {
    std::lock_guard lock(mutex);
    if (failure) {
        return {std::nullopt, failure};
    }
    const auto found = items.find({std::string(service), std::string(account)});
    if (found == items.end()) {
        return {std::nullopt, std::nullopt};
    }
    return {found->second, std::nullopt};
}

SecretStoreStatus InMemorySecretStore::save(std::string_view service, std::string_view account,
                                            std::string_view secret) {
    std::lock_guard lock(mutex);
    if (failure) {
        return failure;
    }
    items[{std::string(service), std::string(account)}] = std::string(secret);
    return std::nullopt;
}

SecretStoreStatus InMemorySecretStore::remove(std::string_view service, std::string_view account) {
    std::lock_guard lock(mutex);
    if (failure) {
        return failure;
    }
    items.erase({std::string(service), std::string(account)});
    return std::nullopt;
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
