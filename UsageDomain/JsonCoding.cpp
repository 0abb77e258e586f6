#include "JsonCoding.h"

#include <cmath>

namespace gaugewell {

void failDecoding(const std::string& path, std::string reason) {
    throw DecodingFailure(DecodeError{path, std::move(reason)});
}

std::string codingPath(const std::string& parent, std::string_view key) {
    return parent.empty() ? std::string(key) : parent + "." + std::string(key);
}

std::string codingPath(const std::string& parent, std::size_t index) {
    return parent + "[" + std::to_string(index) + "]";
}

KeyedDecoder::KeyedDecoder(const JsonValue& json, std::string path)
    : json(json)
    , path(std::move(path)) {
    if (json.objectValue() == nullptr) {
        failDecoding(this->path, "expected an object");
    }
}

std::string JsonCoder<std::string>::decode(const JsonValue& json, const std::string& path) {
    const auto* text = json.stringValue();
    if (text == nullptr) {
        failDecoding(path, "expected a string");
    }
    return *text;
}

bool JsonCoder<bool>::decode(const JsonValue& json, const std::string& path) {
    const auto value = json.boolValue();
    if (!value) {
        failDecoding(path, "expected a Boolean");
    }
    return *value;
}

std::int64_t JsonCoder<std::int64_t>::decode(const JsonValue& json, const std::string& path) {
    if (json.type() != JsonValue::Type::number) {
        failDecoding(path, "expected a number");
    }
    const auto value = json.int64Value();
    if (!value) {
        failDecoding(path, "expected a whole number in range");
    }
    return *value;
}

double JsonCoder<double>::decode(const JsonValue& json, const std::string& path) {
    const auto value = json.doubleValue();
    if (!value) {
        failDecoding(path, "expected a finite number");
    }
    return *value;
}

Decimal JsonCoder<Decimal>::decode(const JsonValue& json, const std::string& path) {
    if (json.type() != JsonValue::Type::number) {
        failDecoding(path, "expected a number");
    }
    const auto value = json.decimalValue();
    if (!value) {
        failDecoding(path, "number is not representable as a decimal");
    }
    return *value;
}

Date JsonCoder<Date>::decode(const JsonValue& json, const std::string& path) {
    return dateFromSecondsSinceReferenceDate(JsonCoder<double>::decode(json, path));
}

Uuid JsonCoder<Uuid>::decode(const JsonValue& json, const std::string& path) {
    const auto value = Uuid::parse(JsonCoder<std::string>::decode(json, path));
    if (!value) {
        failDecoding(path, "expected a UUID");
    }
    return *value;
}

} // namespace gaugewell
