#include "AutostartEntry.h"

#include <algorithm>
#include <sstream>

namespace gaugewell {

namespace {

constexpr std::string_view reservedCharacters = " \t\n\"'\\><~|&;$*?#()`";

bool hasControlCharacter(std::string_view text) {
    return std::any_of(text.begin(), text.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte < 0x20 || byte == 0x7f;
    });
}

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

} // namespace

std::string desktopEntryExecArgument(std::string_view path) {
    const bool quoted = path.find_first_of(reservedCharacters) != std::string_view::npos;
    std::string argument;
    if (quoted) {
        argument.push_back('"');
    }
    for (const char c : path) {
        switch (c) {
        case '"':
        case '`':
        case '$':
            argument += '\\';
            argument += c;
            break;
        case '\\':
            // The quoting rule makes it "\\", and the string rule escapes each of those again.
            argument += "\\\\\\\\";
            break;
        case '%':
            argument += "%%";
            break;
        default:
            argument += c;
        }
    }
    if (quoted) {
        argument.push_back('"');
    }
    return argument;
}

std::optional<std::string> autostartEntryContents(std::string_view executablePath) {
    if (executablePath.empty() || executablePath.front() != '/' || hasControlCharacter(executablePath)) {
        return std::nullopt;
    }
    std::string contents = "[Desktop Entry]\n"
                           "Type=Application\n"
                           "Name=Gaugewell\n"
                           "Comment=Subscription usage of Codex and Claude at a glance\n"
                           "Exec=";
    contents += desktopEntryExecArgument(executablePath);
    contents += "\n"
                "Icon=app.gaugewell.Gaugewell\n"
                "Terminal=false\n"
                "X-GNOME-Autostart-enabled=true\n";
    return contents;
}

bool desktopEntryIsHidden(std::string_view contents) {
    std::istringstream lines{std::string(contents)};
    std::string line;
    bool inMainGroup = false;
    while (std::getline(lines, line)) {
        const auto text = trimmed(line);
        if (text.empty() || text.front() == '#') {
            continue;
        }
        if (text.front() == '[') {
            inMainGroup = text == "[Desktop Entry]";
            continue;
        }
        const auto equals = text.find('=');
        if (inMainGroup && equals != std::string_view::npos && trimmed(text.substr(0, equals)) == "Hidden") {
            return trimmed(text.substr(equals + 1)) == "true";
        }
    }
    return false;
}

} // namespace gaugewell
