#pragma once

#include "UsageDomain/Expected.h"

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace gaugewell {

enum class SecretStoreError {
    unavailable, // no secret service on the bus, or no bus at all
    locked,      // the collection is locked and could not be unlocked
    timedOut,    // the call did not finish before its deadline (for example behind an unlock prompt)
    failed,      // any other refusal of the service
};

std::string_view describe(SecretStoreError error);

// One secret string per (service, account) in the user's secret store. Every call is bounded in time
// and may be made from any thread; none of them may run on a UI thread, since a call can take up to
// its time-out.
class SecretStore {
public:
    virtual ~SecretStore() = default;

    // Absent when nothing is stored.
    virtual Expected<std::optional<std::string>, SecretStoreError> load(std::string_view service,
                                                                        std::string_view account) = 0;
    // Replaces any earlier secret of the same service and account.
    virtual Status<SecretStoreError> save(std::string_view service, std::string_view account,
                                          std::string_view secret) = 0;
    // Removing a secret that does not exist succeeds.
    virtual Status<SecretStoreError> remove(std::string_view service, std::string_view account) = 0;
};

// The freedesktop Secret Service through libsecret (gnome-keyring, KeePassXC, ...): items of the schema
// "app.gaugewell.GenericPassword" with the string attributes "service" and "account", in the default
// collection. Each call gets a cancellable that a watchdog thread cancels at the deadline, because a
// locked keyring may show a prompt that nobody answers and libsecret's synchronous calls would wait for it.
class LibsecretSecretStore final : public SecretStore {
public:
    static constexpr std::chrono::milliseconds defaultTimeout{5000};

    explicit LibsecretSecretStore(std::chrono::milliseconds timeout = defaultTimeout);

    Expected<std::optional<std::string>, SecretStoreError> load(std::string_view service,
                                                                std::string_view account) override;
    Status<SecretStoreError> save(std::string_view service, std::string_view account,
                                  std::string_view secret) override;
    Status<SecretStoreError> remove(std::string_view service, std::string_view account) override;

private:
    std::chrono::milliseconds timeout;
};

} // namespace gaugewell
