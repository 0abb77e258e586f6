#pragma once

#include "UserDefaults.h"

#include <map>
#include <mutex>

namespace gaugewell {

// Settings that live only as long as the object: for tests and previews.
class InMemoryUserDefaults final : public UserDefaults {
public:
    std::optional<UserDefaultsValue> object(const std::string& key) const override {
        const std::lock_guard lock(mutex);
        const auto entry = values.find(key);
        return entry == values.end() ? std::nullopt : std::optional(entry->second);
    }

protected:
    bool store(const std::string& key, std::optional<UserDefaultsValue> value) override {
        const std::lock_guard lock(mutex);
        if (value) {
            values.insert_or_assign(key, std::move(*value));
        } else {
            values.erase(key);
        }
        return true;
    }

private:
    mutable std::mutex mutex;
    std::map<std::string, UserDefaultsValue> values;
};

} // namespace gaugewell
