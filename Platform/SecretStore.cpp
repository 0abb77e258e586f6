#include "SecretStore.h"

#include "Platform/Deadline.h"
#include "Platform/SecureWipe.h"

#include <condition_variable>
#include <libsecret/secret.h>
#include <mutex>
#include <thread>

namespace gaugewell {

namespace {

const SecretSchema& itemSchema() {
    static const SecretSchema schema = {
        "app.gaugewell.GenericPassword",
        SECRET_SCHEMA_NONE,
        {
            {"service", SECRET_SCHEMA_ATTRIBUTE_STRING},
            {"account", SECRET_SCHEMA_ATTRIBUTE_STRING},
            {nullptr, SECRET_SCHEMA_ATTRIBUTE_STRING},
        },
        0,
        nullptr,
        nullptr,
        nullptr,
        nullptr,
        nullptr,
        nullptr,
        nullptr,
    };
    return schema;
}

// libsecret shares one service proxy per process; one call at a time keeps its state simple.
std::mutex& libsecretMutex() {
    static std::mutex mutex;
    return mutex;
}

// Cancels the call's GCancellable when the deadline passes. The call itself runs on the caller's
// thread; the watchdog never touches anything but the cancellable, whose cancel is thread-safe.
class DeadlineWatchdog {
public:
    explicit DeadlineWatchdog(Deadline deadline)
        : cancellable(g_cancellable_new())
        , watcher([this, deadline] {
            std::unique_lock lock(mutex);
            if (!finishedCondition.wait_until(lock, deadline.timePoint(), [this] { return finished; })) {
                g_cancellable_cancel(cancellable);
            }
        }) {}

    ~DeadlineWatchdog() {
        {
            std::lock_guard lock(mutex);
            finished = true;
        }
        finishedCondition.notify_all();
        watcher.join();
        g_object_unref(cancellable);
    }

    DeadlineWatchdog(const DeadlineWatchdog&) = delete;
    DeadlineWatchdog& operator=(const DeadlineWatchdog&) = delete;

    GCancellable* get() const { return cancellable; }

private:
    GCancellable* cancellable;
    std::mutex mutex;
    std::condition_variable finishedCondition;
    bool finished = false;
    std::thread watcher;
};

SecretStoreError classify(const GError* error) {
    if (error->domain == G_IO_ERROR) {
        switch (error->code) {
        case G_IO_ERROR_CANCELLED:
        case G_IO_ERROR_TIMED_OUT:
            return SecretStoreError::timedOut;
        default:
            // The bus itself could not be reached.
            return SecretStoreError::unavailable;
        }
    }
    if (error->domain == G_DBUS_ERROR) {
        switch (error->code) {
        case G_DBUS_ERROR_TIMEOUT:
        case G_DBUS_ERROR_TIMED_OUT:
        case G_DBUS_ERROR_NO_REPLY:
            return SecretStoreError::timedOut;
        case G_DBUS_ERROR_SERVICE_UNKNOWN:
        case G_DBUS_ERROR_NAME_HAS_NO_OWNER:
        case G_DBUS_ERROR_NO_SERVER:
        case G_DBUS_ERROR_DISCONNECTED:
        case G_DBUS_ERROR_FILE_NOT_FOUND:
        case G_DBUS_ERROR_SPAWN_EXEC_FAILED:
        case G_DBUS_ERROR_SPAWN_FORK_FAILED:
        case G_DBUS_ERROR_SPAWN_CHILD_EXITED:
        case G_DBUS_ERROR_SPAWN_CHILD_SIGNALED:
        case G_DBUS_ERROR_SPAWN_FAILED:
        case G_DBUS_ERROR_SPAWN_SERVICE_NOT_FOUND:
        case G_DBUS_ERROR_SPAWN_SERVICE_INVALID:
            return SecretStoreError::unavailable;
        default:
            return SecretStoreError::failed;
        }
    }
    if (error->domain == SECRET_ERROR && error->code == SECRET_ERROR_IS_LOCKED) {
        return SecretStoreError::locked;
    }
    return SecretStoreError::failed;
}

// The error's message may name object paths or the service's own text: only its domain and code are used.
SecretStoreError consume(GError* error) {
    const SecretStoreError result = classify(error);
    g_error_free(error);
    return result;
}

} // namespace

std::string_view describe(SecretStoreError error) {
    switch (error) {
    case SecretStoreError::unavailable:
        return "No secret service (such as GNOME Keyring or KWallet) is running in this session.";
    case SecretStoreError::locked:
        return "The keyring is locked.";
    case SecretStoreError::timedOut:
        return "The keyring did not answer in time.";
    case SecretStoreError::failed:
        break;
    }
    return "The keyring refused the request.";
}

LibsecretSecretStore::LibsecretSecretStore(std::chrono::milliseconds timeout)
    : timeout(timeout) {}

Expected<std::optional<std::string>, SecretStoreError> LibsecretSecretStore::load(std::string_view service,
                                                                                  std::string_view account) {
    const std::string serviceText(service);
    const std::string accountText(account);
    std::lock_guard lock(libsecretMutex());
    DeadlineWatchdog watchdog(Deadline::after(timeout));
    GError* error = nullptr;
    gchar* secret = secret_password_lookup_sync(&itemSchema(), watchdog.get(), &error, "service",
                                                serviceText.c_str(), "account", accountText.c_str(), nullptr);
    if (error != nullptr) {
        if (secret != nullptr) {
            secret_password_free(secret);
        }
        return unexpected(consume(error));
    }
    if (secret == nullptr) {
        return std::optional<std::string>();
    }
    std::optional<std::string> result(secret);
    secret_password_free(secret); // wipes before freeing
    return result;
}

Status<SecretStoreError> LibsecretSecretStore::save(std::string_view service, std::string_view account,
                                                    std::string_view secret) {
    const std::string serviceText(service);
    const std::string accountText(account);
    std::string secretText(secret);
    std::lock_guard lock(libsecretMutex());
    DeadlineWatchdog watchdog(Deadline::after(timeout));
    GError* error = nullptr;
    // Items with the same attributes are replaced, so saving twice never makes a duplicate.
    const gboolean stored = secret_password_store_sync(
        &itemSchema(), SECRET_COLLECTION_DEFAULT, serviceText.c_str(), secretText.c_str(), watchdog.get(),
        &error, "service", serviceText.c_str(), "account", accountText.c_str(), nullptr);
    secureWipe(secretText);
    if (error != nullptr) {
        return unexpected(consume(error));
    }
    if (!stored) {
        return unexpected(SecretStoreError::failed);
    }
    return {};
}

Status<SecretStoreError> LibsecretSecretStore::remove(std::string_view service, std::string_view account) {
    const std::string serviceText(service);
    const std::string accountText(account);
    std::lock_guard lock(libsecretMutex());
    DeadlineWatchdog watchdog(Deadline::after(timeout));
    GError* error = nullptr;
    // FALSE without an error means there was nothing to remove, which is success.
    secret_password_clear_sync(&itemSchema(), watchdog.get(), &error, "service", serviceText.c_str(),
                               "account", accountText.c_str(), nullptr);
    if (error != nullptr) {
        return unexpected(consume(error));
    }
    return {};
}

} // namespace gaugewell
