#include "UserDefaults.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <vector>

namespace gaugewell {

UserDefaults::UserDefaults()
    : registry(std::make_shared<Registry>()) {}

UserDefaults::Subscription::~Subscription() {
    if (auto shared = registry.lock()) {
        auto* registry = static_cast<Registry*>(shared.get());
        const std::lock_guard lock(registry->mutex);
        registry->observers.erase(id);
    }
}

bool UserDefaults::set(std::string_view key, UserDefaultsValue value) {
    const std::string name(key);
    if (!store(name, std::move(value))) {
        return false;
    }
    notify(name);
    return true;
}

bool UserDefaults::remove(std::string_view key) {
    const std::string name(key);
    if (!store(name, std::nullopt)) {
        return false;
    }
    notify(name);
    return true;
}

std::optional<bool> UserDefaults::storedBool(std::string_view key) const {
    const auto value = object(std::string(key));
    if (value && std::holds_alternative<bool>(*value)) {
        return std::get<bool>(*value);
    }
    return std::nullopt;
}

bool UserDefaults::boolValue(std::string_view key) const {
    const auto value = object(std::string(key));
    if (!value) {
        return false;
    }
    if (const auto* flag = std::get_if<bool>(&*value)) {
        return *flag;
    }
    if (const auto* number = std::get_if<double>(&*value)) {
        return *number != 0;
    }
    std::string text = std::get<std::string>(*value);
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text == "true" || text == "yes" || text == "1";
}

double UserDefaults::doubleValue(std::string_view key) const {
    const auto value = object(std::string(key));
    if (!value) {
        return 0;
    }
    if (const auto* number = std::get_if<double>(&*value)) {
        return *number;
    }
    if (const auto* flag = std::get_if<bool>(&*value)) {
        return *flag ? 1 : 0;
    }
    const auto& text = std::get<std::string>(*value);
    double parsed = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), parsed);
    return result.ec == std::errc() && result.ptr == text.data() + text.size() && std::isfinite(parsed)
               ? parsed
               : 0;
}

std::optional<std::string> UserDefaults::stringValue(std::string_view key) const {
    const auto value = object(std::string(key));
    if (!value) {
        return std::nullopt;
    }
    if (const auto* text = std::get_if<std::string>(&*value)) {
        return *text;
    }
    if (const auto* number = std::get_if<double>(&*value)) {
        char buffer[64];
        const auto result = std::to_chars(buffer, buffer + sizeof buffer, *number);
        return std::string(buffer, result.ptr);
    }
    return std::nullopt;
}

UserDefaults::Subscription UserDefaults::observe(Observer observer) {
    const std::lock_guard lock(registry->mutex);
    const auto id = registry->nextID++;
    registry->observers.emplace(id, std::move(observer));
    return Subscription(registry, id);
}

void UserDefaults::notify(const std::string& key) const {
    std::vector<Observer> observers;
    {
        const std::lock_guard lock(registry->mutex);
        for (const auto& [id, observer] : registry->observers) {
            observers.push_back(observer);
        }
    }
    // Outside the lock: an observer may read settings or unsubscribe.
    for (const auto& observer : observers) {
        observer(key);
    }
}

} // namespace gaugewell
