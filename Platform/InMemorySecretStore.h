#pragma once

#include "SecretStore.h"

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace gaugewell {

// A secret store that lives in memory, for tests. A failure can be set to make every call fail with it.
class InMemorySecretStore final : public SecretStore {
public:
    Expected<std::optional<std::string>, SecretStoreError> load(std::string_view service,
                                                                std::string_view account) override;
    Status<SecretStoreError> save(std::string_view service, std::string_view account,
                                  std::string_view secret) override;
    Status<SecretStoreError> remove(std::string_view service, std::string_view account) override;

    // Absent restores normal operation.
    void setFailure(std::optional<SecretStoreError> failure);
    std::size_t itemCount() const;

private:
    mutable std::mutex mutex;
    std::map<std::pair<std::string, std::string>, std::string> items;
    std::optional<SecretStoreError> failure;
};

} // namespace gaugewell
