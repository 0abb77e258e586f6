#pragma once

#include "Platform/SettingsKeys.h"
#include "Platform/UserDefaults.h"
#include "UsageDomain/Expected.h"

#include <string>
#include <string_view>

namespace gaugewell {

enum class SettingValueError { unknownKey, notABoolean, notANumber, outOfRange, notAChoice };

std::string_view describe(SettingValueError error);

// A value typed on the command line, checked against the setting's type and range. Booleans take
// true/false, yes/no, on/off or 1/0; numbers must lie within the setting's range.
Expected<UserDefaultsValue, SettingValueError> parseSettingValue(const SettingDefinition& setting,
                                                                 std::string_view text);

// What a setting holds now, as the command line prints it: the stored value when it has the
// setting's type, else the default (a stored value of another type counts as absent).
std::string effectiveSettingText(const SettingDefinition& setting, const UserDefaults& defaults);
bool isSettingStored(const SettingDefinition& setting, const UserDefaults& defaults);

} // namespace gaugewell
