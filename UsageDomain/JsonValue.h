#pragma once

#include "Decimal.h"
#include "Expected.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace gaugewell {

// An immutable JSON tree. Numbers keep their literal text, so that decimals stay exact and
// integers can be checked for being whole. Objects keep their keys in order.
class JsonValue {
public:
    enum class Type { null, boolean, number, string, array, object };
    using Array = std::vector<JsonValue>;
    using Member = std::pair<std::string, JsonValue>;
    using Object = std::vector<Member>;

    JsonValue() = default; // null
    JsonValue(std::nullptr_t) {}
    explicit JsonValue(bool value)
        : storage(value) {}
    explicit JsonValue(std::string value)
        : storage(std::move(value)) {}
    explicit JsonValue(const char* value)
        : storage(std::string(value)) {}
    explicit JsonValue(Array value)
        : storage(std::move(value)) {}
    explicit JsonValue(Object value)
        : storage(std::move(value)) {}

    static JsonValue number(std::int64_t value);
    static JsonValue number(const Decimal& value);
    // Shortest text that reads back as the same double; non-finite values become null.
    static JsonValue number(double value);
    // The caller vouches that `literal` is a valid JSON number.
    static JsonValue numberLiteral(std::string literal);

    Type type() const;
    bool isNull() const { return type() == Type::null; }

    std::optional<bool> boolValue() const;
    const std::string* stringValue() const;
    const Array* arrayValue() const;
    const Object* objectValue() const;
    // The literal text of a number, exactly as written.
    const std::string* numberLiteralText() const;
    std::optional<Decimal> decimalValue() const;
    // Whole numbers only (42, 42.0, 4.2e1), in range.
    std::optional<std::int64_t> int64Value() const;
    std::optional<double> doubleValue() const;

    // Object member lookup; the last of duplicate keys wins. Null for non-objects.
    const JsonValue* find(std::string_view key) const;

    // Compact text: keys in order, "/" unescaped, non-ASCII written as UTF-8.
    std::string serialized() const;

    bool operator==(const JsonValue&) const = default;

private:
    struct NumberText {
        std::string literal;
        bool operator==(const NumberText&) const = default;
    };
    explicit JsonValue(NumberText value)
        : storage(std::move(value)) {}

    std::variant<std::monostate, bool, NumberText, std::string, Array, Object> storage;
};

struct JsonParseError {
    std::string reason;
};

inline constexpr std::size_t jsonMaximumDepth = 512;

// Strict RFC 8259 parsing of untrusted text: valid UTF-8, one value, nothing after it.
Expected<JsonValue, JsonParseError> parseJson(std::string_view text);

} // namespace gaugewell
