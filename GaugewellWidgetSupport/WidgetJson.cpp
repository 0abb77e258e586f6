// The JSON form of the widget records: written by hand so that numbers read as the widget's
// peers write them (785010000, not 785010000.0 nor 7.8501e+08), parsed with nlohmann.

#include "WidgetUsageSnapshot.h"

#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>

namespace gaugewell {

namespace {

using Json = nlohmann::json;

// The snapshot nests four levels deep; anything much deeper is not one, and refusing it before
// parsing keeps a hostile body from building a huge tree.
constexpr int maximumNesting = 16;

void appendString(std::string& out, const std::string& text) {
    // Invalid UTF-8 becomes U+FFFD so that the output is always valid JSON.
    out += Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
}

void appendNumber(std::string& out, double value) {
    if (!std::isfinite(value) || value == 0) {
        out += '0';
        return;
    }
    char buffer[64];
    const double magnitude = std::fabs(value);
    // Plain digits for everyday magnitudes, the shortest form that reads back exactly otherwise.
    const auto result = magnitude >= 1e-4 && magnitude < 1e16
                            ? std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed)
                            : std::to_chars(buffer, buffer + sizeof buffer, value);
    out.append(buffer, result.ptr);
}

void appendDate(std::string& out, WidgetDate date) {
    appendNumber(out, widgetSecondsSinceReferenceDate(date));
}

void appendKey(std::string& out, std::string_view key) {
    out += '"';
    out += key;
    out += "\":";
}

bool nestsTooDeeply(std::string_view text) {
    int depth = 0;
    bool inString = false;
    bool escaped = false;
    for (const char c : text) {
        if (inString) {
            if (escaped) {
                escaped = false;
            } else if (c == '\\') {
                escaped = true;
            } else if (c == '"') {
                inString = false;
            }
        } else if (c == '"') {
            inString = true;
        } else if (c == '[' || c == '{') {
            if (++depth > maximumNesting) {
                return true;
            }
        } else if (c == ']' || c == '}') {
            --depth;
        }
    }
    return false;
}

struct DecodingFailure {
    WidgetSnapshotDecodingError error;
};

const Json& member(const Json& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end()) {
        throw DecodingFailure{WidgetSnapshotDecodingError::missingKey};
    }
    return *found;
}

const Json& typed(const Json& value, bool matches) {
    if (!matches) {
        throw DecodingFailure{WidgetSnapshotDecodingError::wrongType};
    }
    return value;
}

std::string stringMember(const Json& object, const char* key) {
    const Json& value = member(object, key);
    return typed(value, value.is_string()).get<std::string>();
}

double numberMember(const Json& value) {
    return typed(value, value.is_number()).get<double>();
}

const Json& objectValue(const Json& value) {
    return typed(value, value.is_object());
}

const Json& arrayMember(const Json& object, const char* key) {
    const Json& value = member(object, key);
    return typed(value, value.is_array());
}

template <class T> T known(std::optional<T> value) {
    if (!value) {
        throw DecodingFailure{WidgetSnapshotDecodingError::unknownValue};
    }
    return *value;
}

WidgetWindow decodeWindow(const Json& json) {
    const Json& object = objectValue(json);
    std::optional<WidgetDate> resetAt;
    if (const auto found = object.find("resetAt"); found != object.end() && !found->is_null()) {
        resetAt = widgetDateFromSecondsSinceReferenceDate(numberMember(*found));
    }
    return WidgetWindow(stringMember(object, "id"), stringMember(object, "name"),
                        numberMember(member(object, "usedFraction")), resetAt);
}

WidgetProviderUsage decodeProvider(const Json& json) {
    const Json& object = objectValue(json);
    const auto service = known(widgetProviderService(stringMember(object, "service")));
    const auto state = known(widgetProviderState(stringMember(object, "state")));
    std::vector<WidgetWindow> windows;
    for (const Json& window : arrayMember(object, "windows")) {
        windows.push_back(decodeWindow(window));
    }
    return WidgetProviderUsage(service, state, std::move(windows));
}

} // namespace

WidgetWindow::WidgetWindow(std::string id, std::string name, double usedFraction,
                           std::optional<WidgetDate> resetAt)
    : id_(std::move(id))
    , name_(std::move(name))
    // Written so that NaN lands on 0 and -0 becomes +0.
    , usedFraction_(usedFraction > 0 ? (usedFraction < 1 ? usedFraction : 1.0) : 0.0)
    , resetAt_(resetAt) {}

std::string WidgetWindow::json() const {
    std::string out = "{";
    appendKey(out, "id");
    appendString(out, id_);
    out += ',';
    appendKey(out, "name");
    appendString(out, name_);
    out += ',';
    appendKey(out, "usedFraction");
    appendNumber(out, usedFraction_);
    if (resetAt_) {
        out += ',';
        appendKey(out, "resetAt");
        appendDate(out, *resetAt_);
    }
    out += '}';
    return out;
}

std::string WidgetProviderUsage::json() const {
    std::string out = "{";
    appendKey(out, "service");
    out += '"';
    out += rawValue(service_);
    out += "\",";
    appendKey(out, "state");
    out += '"';
    out += rawValue(state_);
    out += "\",";
    appendKey(out, "windows");
    out += '[';
    for (std::size_t index = 0; index < windows_.size(); ++index) {
        if (index > 0) {
            out += ',';
        }
        out += windows_[index].json();
    }
    out += "]}";
    return out;
}

std::string WidgetUsageSnapshot::json() const {
    std::string out = "{";
    appendKey(out, "updatedAt");
    appendDate(out, updatedAt_);
    out += ',';
    appendKey(out, "providers");
    out += '[';
    for (std::size_t index = 0; index < providers_.size(); ++index) {
        if (index > 0) {
            out += ',';
        }
        out += providers_[index].json();
    }
    out += "]}";
    return out;
}

WidgetResult<WidgetUsageSnapshot, WidgetSnapshotDecodingError>
WidgetUsageSnapshot::decode(std::string_view json) {
    if (nestsTooDeeply(json)) {
        return WidgetSnapshotDecodingError::malformedJSON;
    }
    const Json parsed = Json::parse(json, nullptr, false);
    if (parsed.is_discarded()) {
        return WidgetSnapshotDecodingError::malformedJSON;
    }
    try {
        const Json& object = objectValue(parsed);
        const auto updatedAt =
            widgetDateFromSecondsSinceReferenceDate(numberMember(member(object, "updatedAt")));
        std::vector<WidgetProviderUsage> providers;
        for (const Json& provider : arrayMember(object, "providers")) {
            providers.push_back(decodeProvider(provider));
        }
        return WidgetUsageSnapshot(updatedAt, std::move(providers));
    } catch (const DecodingFailure& failure) {
        return failure.error;
    } catch (const Json::exception&) {
        return WidgetSnapshotDecodingError::wrongType;
    }
}

} // namespace gaugewell
