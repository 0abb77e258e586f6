#include "Platform/SettingValue.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace gaugewell {

std::string_view describe(SettingValueError error) {
    switch (error) {
    case SettingValueError::unknownKey:
        return "there is no such setting (gaugewell config lists them)";
    case SettingValueError::notABoolean:
        return "the value must be true or false";
    case SettingValueError::notANumber:
        return "the value must be a number";
    case SettingValueError::outOfRange:
        return "the value is out of range";
    case SettingValueError::notAChoice:
        return "the value is not one of the choices";
    }
    return "";
}

namespace {

std::string numberText(double value) {
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    return std::string(buffer, result.ptr);
}

} // namespace

Expected<UserDefaultsValue, SettingValueError> parseSettingValue(const SettingDefinition& setting,
                                                                 std::string_view text) {
    switch (setting.type) {
    case SettingType::boolean: {
        std::string lower(text);
        std::transform(lower.begin(), lower.end(), lower.begin(),
                       [](unsigned char c) { return std::tolower(c); });
        if (lower == "true" || lower == "yes" || lower == "on" || lower == "1") {
            return UserDefaultsValue(true);
        }
        if (lower == "false" || lower == "no" || lower == "off" || lower == "0") {
            return UserDefaultsValue(false);
        }
        return unexpected(SettingValueError::notABoolean);
    }
    case SettingType::number: {
        double value = 0;
        const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
        if (result.ec != std::errc() || result.ptr != text.data() + text.size() || !std::isfinite(value)) {
            return unexpected(SettingValueError::notANumber);
        }
        if (value < setting.minimum || value > setting.maximum) {
            return unexpected(SettingValueError::outOfRange);
        }
        return UserDefaultsValue(value);
    }
    case SettingType::text:
        if (!setting.choices.empty() &&
            std::find(setting.choices.begin(), setting.choices.end(), text) == setting.choices.end()) {
            return unexpected(SettingValueError::notAChoice);
        }
        return UserDefaultsValue(std::string(text));
    }
    return unexpected(SettingValueError::unknownKey);
}

bool isSettingStored(const SettingDefinition& setting, const UserDefaults& defaults) {
    const auto stored = defaults.object(std::string(setting.key));
    if (!stored) {
        return false;
    }
    switch (setting.type) {
    case SettingType::boolean:
        return std::holds_alternative<bool>(*stored);
    case SettingType::number:
        return std::holds_alternative<double>(*stored);
    case SettingType::text:
        return std::holds_alternative<std::string>(*stored);
    }
    return false;
}

std::string effectiveSettingText(const SettingDefinition& setting, const UserDefaults& defaults) {
    if (!isSettingStored(setting, defaults)) {
        return std::string(setting.defaultValue);
    }
    const auto stored = *defaults.object(std::string(setting.key));
    if (const auto* flag = std::get_if<bool>(&stored)) {
        return *flag ? "true" : "false";
    }
    if (const auto* number = std::get_if<double>(&stored)) {
        return numberText(*number);
    }
    return std::get<std::string>(stored);
}

} // namespace gaugewell
