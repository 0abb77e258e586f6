#include "CommandLine.h"
#include "Platform/SettingValue.h"

#include <algorithm>
#include <iomanip>
#include <ostream>
#include <sstream>

namespace gaugewell {

namespace {

constexpr const char* configUsage = "Usage: gaugewell config [get KEY | set KEY VALUE | reset KEY]\n";

std::string choicesText(const SettingDefinition& setting) {
    switch (setting.type) {
    case SettingType::boolean:
        return "true|false";
    case SettingType::number: {
        std::ostringstream range;
        range << setting.minimum << ".." << setting.maximum;
        return range.str();
    }
    case SettingType::text:
        break;
    }
    std::string joined;
    for (const auto choice : setting.choices) {
        joined += (joined.empty() ? "" : "|") + std::string(choice);
    }
    return joined;
}

} // namespace

int CommandLine::config(const std::vector<std::string>& arguments, std::ostream& out,
                        std::ostream& err) const {
    if (arguments.size() == 2 && (arguments[1] == "--help" || arguments[1] == "-h")) {
        out << configUsage
            << "  Lists, reads or changes Gaugewell's settings; a running Gaugewell follows at once.\n"
               "  Example: gaugewell config set notifications.enabled true\n";
        return success;
    }
    const auto defaults = dependencies.defaults();
    if (arguments.size() == 1) {
        std::size_t width = 0;
        for (const auto& setting : settingDefinitions) {
            width = std::max(width, setting.key.size());
        }
        for (const auto& setting : settingDefinitions) {
            const std::string value = effectiveSettingText(setting, *defaults);
            out << std::left << std::setw(static_cast<int>(width) + 2) << setting.key << std::setw(14)
                << value;
            if (isSettingStored(setting, *defaults) && value != setting.defaultValue) {
                out << "  (default " << setting.defaultValue << ")";
            } else {
                out << "  (default)";
            }
            out << "  [" << choicesText(setting) << "]\n";
        }
        return success;
    }
    const std::string& verb = arguments[1];
    const bool shaped = (verb == "get" && arguments.size() == 3) ||
                        (verb == "reset" && arguments.size() == 3) ||
                        (verb == "set" && arguments.size() == 4);
    if (!shaped) {
        err << configUsage;
        return usageError;
    }
    const auto setting = settingDefinition(arguments[2]);
    if (!setting) {
        err << "gaugewell: " << arguments[2] << ": " << describe(SettingValueError::unknownKey) << '\n';
        return usageError;
    }
    if (verb == "get") {
        out << effectiveSettingText(*setting, *defaults) << '\n';
        return success;
    }
    if (verb == "reset") {
        if (!defaults->remove(setting->key)) {
            err << "gaugewell: the settings file could not be written\n";
            return failure;
        }
        return success;
    }
    const auto value = parseSettingValue(*setting, arguments[3]);
    if (!value) {
        err << "gaugewell: " << setting->key << ": " << describe(value.error()) << " ("
            << choicesText(*setting) << ")\n";
        return usageError;
    }
    if (!defaults->set(setting->key, *value)) {
        err << "gaugewell: the settings file could not be written\n";
        return failure;
    }
    return success;
}

} // namespace gaugewell
