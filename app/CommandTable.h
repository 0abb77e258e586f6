#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace gaugewell {

// What completes one argument position of a command.
enum class ArgumentKind {
    none,
    service,
    widgetFormat,
    path,
    configVerb,
    settingKey,
    settingValue,
    window,
    settingsPage
};

// One command of `gaugewell`, as --help, the manual page and the shell completions describe it.
struct CommandSpec {
    std::string_view name;
    std::string_view synopsis; // after the name
    std::string_view summary;
    std::vector<std::string_view> flags;
    std::vector<ArgumentKind> arguments;
};

std::span<const CommandSpec> commandTable();

// The --help text.
std::string commandLineUsage();
// A troff manual page, gaugewell(1).
std::string manualPage(std::string_view version);
// Completion scripts for bash and zsh.
std::string bashCompletion();
std::string zshCompletion();

} // namespace gaugewell
