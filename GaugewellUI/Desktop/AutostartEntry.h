#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace gaugewell {

// The XDG autostart entry that starts `executablePath` at login; absent for a path that is not
// absolute or holds control characters, which an Exec line cannot carry.
std::optional<std::string> autostartEntryContents(std::string_view executablePath);

// `path` as one argument of a desktop entry's Exec key: quoted when it holds a reserved character,
// with the quoting rule's escapes and then the string escapes applied (a backslash becomes four),
// and "%" doubled so that it is not taken for a field code.
std::string desktopEntryExecArgument(std::string_view path);

// Whether a desktop entry's main group says Hidden=true, which makes the entry count as deleted.
bool desktopEntryIsHidden(std::string_view contents);

} // namespace gaugewell
