#pragma once

#include "Date.h"
#include "Decimal.h"
#include "Expected.h"
#include "JsonValue.h"
#include "RawValue.h"
#include "Uuid.h"

#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace gaugewell {

// Why a decode failed and where. Never carries the input's text, which may be a secret or a payload.
struct DecodeError {
    std::string path; // "windows[2].resetAt"; empty for the root
    std::string reason;

    std::string text() const { return path.empty() ? reason : path + ": " + reason; }
};

// Thrown inside a decode and turned into a DecodeError at the `decodeJson` boundary; never escapes it.
class DecodingFailure : public std::exception {
public:
    explicit DecodingFailure(DecodeError error)
        : error(std::move(error)) {}
    const char* what() const noexcept override { return "JSON decoding failed"; }
    DecodeError error;
};

[[noreturn]] void failDecoding(const std::string& path, std::string reason);
std::string codingPath(const std::string& parent, std::string_view key);
std::string codingPath(const std::string& parent, std::size_t index);

// Keyed JSON form of a type: encode(value) -> JsonValue, decode(json, path) -> value or DecodingFailure.
template <class T> struct JsonCoder;

template <class T> JsonValue encodeJson(const T& value) {
    return JsonCoder<T>::encode(value);
}

// All or nothing: on failure, nothing is built.
template <class T> Expected<T, DecodeError> decodeJson(const JsonValue& json) {
    try {
        return JsonCoder<T>::decode(json, std::string());
    } catch (const DecodingFailure& failure) {
        return unexpected(failure.error);
    }
}

template <class T> Expected<T, DecodeError> decodeJson(std::string_view text) {
    auto parsed = parseJson(text);
    if (!parsed) {
        return unexpected(DecodeError{std::string(), parsed.error().reason});
    }
    return decodeJson<T>(*parsed);
}

// Reads an object's members with the keyed-container rules: a missing required key or a wrong
// type fails; a missing or null optional is absent; unknown keys are ignored.
class KeyedDecoder {
public:
    KeyedDecoder(const JsonValue& json, std::string path);

    template <class T> T decode(std::string_view key) const {
        const JsonValue* member = json.find(key);
        if (member == nullptr) {
            failDecoding(gaugewell::codingPath(path, key), "required key is missing");
        }
        return JsonCoder<T>::decode(*member, gaugewell::codingPath(path, key));
    }

    template <class T> std::optional<T> decodeIfPresent(std::string_view key) const {
        const JsonValue* member = json.find(key);
        if (member == nullptr || member->isNull()) {
            return std::nullopt;
        }
        return JsonCoder<T>::decode(*member, gaugewell::codingPath(path, key));
    }

    bool contains(std::string_view key) const { return json.find(key) != nullptr; }
    const JsonValue* member(std::string_view key) const { return json.find(key); }
    const std::string& currentPath() const { return path; }

private:
    const JsonValue& json;
    std::string path;
};

// Writes members in the order they are given; absent optionals are left out.
class KeyedEncoder {
public:
    template <class T> KeyedEncoder& encode(std::string key, const T& value) {
        members.emplace_back(std::move(key), JsonCoder<T>::encode(value));
        return *this;
    }
    template <class T> KeyedEncoder& encodeIfPresent(std::string key, const std::optional<T>& value) {
        if (value) {
            encode(std::move(key), *value);
        }
        return *this;
    }
    JsonValue result() { return JsonValue(std::move(members)); }

private:
    JsonValue::Object members;
};

template <> struct JsonCoder<std::string> {
    static JsonValue encode(const std::string& value) { return JsonValue(value); }
    static std::string decode(const JsonValue& json, const std::string& path);
};

template <> struct JsonCoder<bool> {
    static JsonValue encode(bool value) { return JsonValue(value); }
    static bool decode(const JsonValue& json, const std::string& path);
};

template <> struct JsonCoder<std::int64_t> {
    static JsonValue encode(std::int64_t value) { return JsonValue::number(value); }
    static std::int64_t decode(const JsonValue& json, const std::string& path);
};

template <> struct JsonCoder<double> {
    static JsonValue encode(double value) { return JsonValue::number(value); }
    static double decode(const JsonValue& json, const std::string& path);
};

template <> struct JsonCoder<Decimal> {
    static JsonValue encode(const Decimal& value) { return JsonValue::number(value); }
    static Decimal decode(const JsonValue& json, const std::string& path);
};

// Dates are seconds since the reference date, 2001-01-01T00:00:00Z.
template <> struct JsonCoder<Date> {
    static JsonValue encode(Date value) { return JsonValue::number(secondsSinceReferenceDate(value)); }
    static Date decode(const JsonValue& json, const std::string& path);
};

template <> struct JsonCoder<Uuid> {
    static JsonValue encode(const Uuid& value) { return JsonValue(value.text()); }
    static Uuid decode(const JsonValue& json, const std::string& path);
};

template <RawRepresentable E> struct JsonCoder<E> {
    static JsonValue encode(E value) { return JsonValue(std::string(rawValue(value))); }
    static E decode(const JsonValue& json, const std::string& path) {
        const auto text = JsonCoder<std::string>::decode(json, path);
        const auto value = fromRawValue<E>(text);
        if (!value) {
            failDecoding(path, "unknown enumeration value");
        }
        return *value;
    }
};

template <class T> struct JsonCoder<std::vector<T>> {
    static JsonValue encode(const std::vector<T>& values) {
        JsonValue::Array array;
        array.reserve(values.size());
        for (const auto& value : values) {
            array.push_back(JsonCoder<T>::encode(value));
        }
        return JsonValue(std::move(array));
    }
    static std::vector<T> decode(const JsonValue& json, const std::string& path) {
        const auto* array = json.arrayValue();
        if (array == nullptr) {
            failDecoding(path, "expected an array");
        }
        std::vector<T> values;
        values.reserve(array->size());
        for (std::size_t index = 0; index < array->size(); ++index) {
            values.push_back(JsonCoder<T>::decode((*array)[index], codingPath(path, index)));
        }
        return values;
    }
};

} // namespace gaugewell
