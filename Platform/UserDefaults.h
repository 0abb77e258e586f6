#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace gaugewell {

// A stored setting keeps its type: a stored Boolean is distinguishable from a string "true".
using UserDefaultsValue = std::variant<bool, double, std::string>;

// Typed per-user settings by key, shared by the components that read them. Thread-safe.
class UserDefaults {
public:
    using Observer = std::function<void(const std::string& key)>;

    // Removes its observer when destroyed.
    class Subscription {
    public:
        Subscription() = default;
        Subscription(Subscription&&) noexcept = default;
        Subscription& operator=(Subscription&&) noexcept = default;
        ~Subscription();

    private:
        friend class UserDefaults;
        Subscription(std::weak_ptr<void> registry, std::size_t id)
            : registry(std::move(registry))
            , id(id) {}
        std::weak_ptr<void> registry;
        std::size_t id = 0;
    };

    UserDefaults();
    virtual ~UserDefaults() = default;

    virtual std::optional<UserDefaultsValue> object(const std::string& key) const = 0;
    // False when the value could not be stored (the store is unwritable); nothing changes then.
    bool set(std::string_view key, UserDefaultsValue value);
    bool remove(std::string_view key);

    // Only a stored Boolean; anything else is absent.
    std::optional<bool> storedBool(std::string_view key) const;
    // The lenient reading: a Boolean, a non-zero number, or "true"/"yes"/"1"; absent reads as false.
    bool boolValue(std::string_view key) const;
    // A number, or a string that is one; otherwise 0.
    double doubleValue(std::string_view key) const;
    // A string, or a number written as text; otherwise absent.
    std::optional<std::string> stringValue(std::string_view key) const;

    // Called after a key changes, on the thread that changed it; an empty key means "possibly all".
    [[nodiscard]] Subscription observe(Observer observer);

protected:
    virtual bool store(const std::string& key, std::optional<UserDefaultsValue> value) = 0;
    void notify(const std::string& key) const;

private:
    struct Registry {
        std::mutex mutex;
        std::size_t nextID = 1;
        std::map<std::size_t, Observer> observers;
    };
    std::shared_ptr<Registry> registry;
};

} // namespace gaugewell
