#include "JsonValue.h"

#include <charconv>
#include <cmath>
#include <simdjson.h>

namespace gaugewell {

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// RFC 8259 number grammar: -?(0|[1-9][0-9]*)(\.[0-9]+)?([eE][+-]?[0-9]+)?
bool isJsonNumberLiteral(std::string_view text) {
    std::size_t i = 0;
    const auto at = [&](std::size_t k) { return k < text.size() ? text[k] : '\0'; };
    if (at(i) == '-') {
        ++i;
    }
    if (at(i) == '0') {
        ++i;
    } else if (isDigit(at(i))) {
        while (isDigit(at(i))) {
            ++i;
        }
    } else {
        return false;
    }
    if (at(i) == '.') {
        ++i;
        if (!isDigit(at(i))) {
            return false;
        }
        while (isDigit(at(i))) {
            ++i;
        }
    }
    if (at(i) == 'e' || at(i) == 'E') {
        ++i;
        if (at(i) == '+' || at(i) == '-') {
            ++i;
        }
        if (!isDigit(at(i))) {
            return false;
        }
        while (isDigit(at(i))) {
            ++i;
        }
    }
    return i == text.size();
}

std::string_view trimmedWhitespace(std::string_view text) {
    const auto isSpace = [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; };
    while (!text.empty() && isSpace(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isSpace(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

struct ParseFailure {
    std::string reason;
};

class TreeBuilder {
public:
    Expected<JsonValue, ParseFailure> build(simdjson::ondemand::value value, std::size_t depth) {
        if (depth > jsonMaximumDepth) {
            return unexpected(ParseFailure{"nesting too deep"});
        }
        simdjson::ondemand::json_type type;
        if (value.type().get(type)) {
            return unexpected(ParseFailure{"malformed value"});
        }
        switch (type) {
        case simdjson::ondemand::json_type::array: {
            simdjson::ondemand::array array;
            if (value.get_array().get(array)) {
                return unexpected(ParseFailure{"malformed array"});
            }
            return buildArray(array, depth);
        }
        case simdjson::ondemand::json_type::object: {
            simdjson::ondemand::object object;
            if (value.get_object().get(object)) {
                return unexpected(ParseFailure{"malformed object"});
            }
            return buildObject(object, depth);
        }
        case simdjson::ondemand::json_type::number: {
            return buildNumber(value.raw_json_token());
        }
        case simdjson::ondemand::json_type::string: {
            std::string_view text;
            if (value.get_string().get(text)) {
                return unexpected(ParseFailure{"malformed string"});
            }
            return JsonValue(std::string(text));
        }
        case simdjson::ondemand::json_type::boolean: {
            bool flag = false;
            if (value.get_bool().get(flag)) {
                return unexpected(ParseFailure{"malformed literal"});
            }
            return JsonValue(flag);
        }
        case simdjson::ondemand::json_type::null: {
            bool isNull = false;
            if (value.is_null().get(isNull) || !isNull) {
                return unexpected(ParseFailure{"malformed literal"});
            }
            return JsonValue();
        }
        }
        return unexpected(ParseFailure{"malformed value"});
    }

    Expected<JsonValue, ParseFailure> buildArray(simdjson::ondemand::array& array, std::size_t depth) {
        JsonValue::Array elements;
        for (auto element : array) {
            simdjson::ondemand::value child;
            if (element.get(child)) {
                return unexpected(ParseFailure{"malformed array"});
            }
            auto built = build(child, depth + 1);
            if (!built) {
                return built;
            }
            elements.push_back(std::move(built).value());
        }
        return JsonValue(std::move(elements));
    }

    Expected<JsonValue, ParseFailure> buildObject(simdjson::ondemand::object& object, std::size_t depth) {
        JsonValue::Object members;
        for (auto field : object) {
            std::string_view keyView;
            if (field.unescaped_key().get(keyView)) {
                return unexpected(ParseFailure{"malformed object key"});
            }
            std::string key(keyView); // the parser reuses its buffer for the next string
            simdjson::ondemand::value child;
            if (field.value().get(child)) {
                return unexpected(ParseFailure{"malformed object"});
            }
            auto built = build(child, depth + 1);
            if (!built) {
                return built;
            }
            members.emplace_back(std::move(key), std::move(built).value());
        }
        return JsonValue(std::move(members));
    }

    static Expected<JsonValue, ParseFailure> buildNumber(std::string_view text) {
        if (!isJsonNumberLiteral(trimmedWhitespace(text))) {
            return unexpected(ParseFailure{"malformed number"});
        }
        return JsonValue::numberLiteral(std::string(trimmedWhitespace(text)));
    }
};

void appendEscaped(std::string& out, const std::string& text) {
    static constexpr char hex[] = "0123456789abcdef";
    out.push_back('"');
    for (const char c : text) {
        switch (c) {
        case '"':
            out += "\\\"";
            break;
        case '\\':
            out += "\\\\";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\r':
            out += "\\r";
            break;
        case '\t':
            out += "\\t";
            break;
        case '\b':
            out += "\\b";
            break;
        case '\f':
            out += "\\f";
            break;
        default:
            if (static_cast<unsigned char>(c) < 0x20) {
                out += "\\u00";
                out.push_back(hex[(c >> 4) & 0x0f]);
                out.push_back(hex[c & 0x0f]);
            } else {
                out.push_back(c);
            }
        }
    }
    out.push_back('"');
}

} // namespace

JsonValue JsonValue::number(std::int64_t value) {
    return JsonValue(NumberText{std::to_string(value)});
}

JsonValue JsonValue::number(const Decimal& value) {
    return JsonValue(NumberText{value.text()});
}

JsonValue JsonValue::number(double value) {
    if (!std::isfinite(value)) {
        return JsonValue();
    }
    // Plain digits for ordinary magnitudes (a date is 800000000, not 8e+08), as JavaScript
    // writes them; still the shortest text that reads back as the same double.
    char buffer[400];
    const double magnitude = std::fabs(value);
    const bool plain = magnitude == 0 || (magnitude >= 1e-6 && magnitude < 1e21);
    const auto result = plain ? std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed)
                              : std::to_chars(buffer, buffer + sizeof buffer, value);
    return JsonValue(NumberText{std::string(buffer, result.ptr)});
}

JsonValue JsonValue::numberLiteral(std::string literal) {
    return JsonValue(NumberText{std::move(literal)});
}

JsonValue::Type JsonValue::type() const {
    switch (storage.index()) {
    case 0:
        return Type::null;
    case 1:
        return Type::boolean;
    case 2:
        return Type::number;
    case 3:
        return Type::string;
    case 4:
        return Type::array;
    default:
        return Type::object;
    }
}

std::optional<bool> JsonValue::boolValue() const {
    if (const auto* value = std::get_if<bool>(&storage)) {
        return *value;
    }
    return std::nullopt;
}

const std::string* JsonValue::stringValue() const {
    return std::get_if<std::string>(&storage);
}
const JsonValue::Array* JsonValue::arrayValue() const {
    return std::get_if<Array>(&storage);
}
const JsonValue::Object* JsonValue::objectValue() const {
    return std::get_if<Object>(&storage);
}

const std::string* JsonValue::numberLiteralText() const {
    if (const auto* number = std::get_if<NumberText>(&storage)) {
        return &number->literal;
    }
    return nullptr;
}

std::optional<Decimal> JsonValue::decimalValue() const {
    if (const auto* literal = numberLiteralText()) {
        return Decimal::parse(*literal);
    }
    return std::nullopt;
}

std::optional<std::int64_t> JsonValue::int64Value() const {
    if (const auto decimal = decimalValue()) {
        return decimal->int64Value();
    }
    return std::nullopt;
}

std::optional<double> JsonValue::doubleValue() const {
    const auto* literal = numberLiteralText();
    if (literal == nullptr) {
        return std::nullopt;
    }
    double result = 0;
    const auto parsed = std::from_chars(literal->data(), literal->data() + literal->size(), result);
    if (parsed.ec != std::errc() || !std::isfinite(result)) {
        return std::nullopt;
    }
    return result;
}

const JsonValue* JsonValue::find(std::string_view key) const {
    const auto* object = objectValue();
    if (object == nullptr) {
        return nullptr;
    }
    for (auto it = object->rbegin(); it != object->rend(); ++it) {
        if (it->first == key) {
            return &it->second;
        }
    }
    return nullptr;
}

std::string JsonValue::serialized() const {
    std::string out;
    struct Writer {
        std::string& out;
        void operator()(std::monostate) const { out += "null"; }
        void operator()(bool value) const { out += value ? "true" : "false"; }
        void operator()(const NumberText& number) const { out += number.literal; }
        void operator()(const std::string& text) const { appendEscaped(out, text); }
        void operator()(const Array& array) const {
            out.push_back('[');
            for (std::size_t i = 0; i < array.size(); ++i) {
                if (i > 0) {
                    out.push_back(',');
                }
                std::visit(*this, array[i].storage);
            }
            out.push_back(']');
        }
        void operator()(const Object& object) const {
            out.push_back('{');
            for (std::size_t i = 0; i < object.size(); ++i) {
                if (i > 0) {
                    out.push_back(',');
                }
                appendEscaped(out, object[i].first);
                out.push_back(':');
                std::visit(*this, object[i].second.storage);
            }
            out.push_back('}');
        }
    };
    std::visit(Writer{out}, storage);
    return out;
}

Expected<JsonValue, JsonParseError> parseJson(std::string_view text) {
    // One parser per thread keeps its buffers between calls.
    thread_local simdjson::ondemand::parser parser;
    const simdjson::padded_string padded(text);
    simdjson::ondemand::document document;
    if (parser.iterate(padded).get(document)) {
        return unexpected(JsonParseError{"not valid JSON"});
    }

    simdjson::ondemand::json_type rootType;
    if (document.type().get(rootType)) {
        return unexpected(JsonParseError{"not valid JSON"});
    }
    TreeBuilder builder;
    Expected<JsonValue, ParseFailure> root = unexpected(ParseFailure{"not valid JSON"});
    switch (rootType) {
    case simdjson::ondemand::json_type::array:
    case simdjson::ondemand::json_type::object: {
        simdjson::ondemand::value value;
        if (document.get_value().get(value)) {
            return unexpected(JsonParseError{"not valid JSON"});
        }
        root = builder.build(value, 1);
        break;
    }
    case simdjson::ondemand::json_type::number: {
        // A scalar root is one token; anything else around it is trailing content.
        std::string_view token;
        if (!document.raw_json_token().get(token) && trimmedWhitespace(token) == trimmedWhitespace(text)) {
            root = TreeBuilder::buildNumber(token);
        }
        break;
    }
    case simdjson::ondemand::json_type::string: {
        std::string_view value;
        if (!document.get_string().get(value)) {
            root = JsonValue(std::string(value));
        }
        break;
    }
    case simdjson::ondemand::json_type::boolean: {
        bool value = false;
        if (!document.get_bool().get(value)) {
            root = JsonValue(value);
        }
        break;
    }
    case simdjson::ondemand::json_type::null: {
        bool isNull = false;
        if (!document.is_null().get(isNull) && isNull) {
            root = JsonValue();
        }
        break;
    }
    }
    if (!root) {
        return unexpected(JsonParseError{root.error().reason});
    }
    if (rootType == simdjson::ondemand::json_type::array ||
        rootType == simdjson::ondemand::json_type::object) {
        const char* location = nullptr;
        if (!document.current_location().get(location)) {
            return unexpected(JsonParseError{"unexpected content after the JSON value"});
        }
    }
    return std::move(root).value();
}

} // namespace gaugewell
