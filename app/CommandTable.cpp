#include "CommandTable.h"

#include "Platform/SettingsKeys.h"

#include <sstream>

namespace gaugewell {

namespace {

const std::vector<CommandSpec>& commands() {
    using A = ArgumentKind;
    static const std::vector<CommandSpec> table{
        {"probe",
         "codex|claude [--json]",
         "check whether a service can be read on this machine",
         {"--json"},
         {A::service}},
        {"collect",
         "codex|claude [--json]",
         "read a service's current usage windows once",
         {"--json"},
         {A::service}},
        {"accounts", "[--json]", "show whether each service is connected", {"--json"}, {}},
        {"connect", "codex|claude", "sign in through the browser and allow usage access", {}, {A::service}},
        {"disconnect", "codex|claude", "sign out and remove Gaugewell's access", {}, {A::service}},
        {"status", "[--json]", "refresh both services once and show their usage", {"--json"}, {}},
        {"daemon", "", "run without a tray: refresh, notify, serve the widget feed", {}, {}},
        {"widget",
         "[--format json|text|waybar]",
         "read a running Gaugewell's widget feed",
         {"--format"},
         {A::widgetFormat}},
        {"report", "PATH", "write a sanitised diagnostics report", {}, {A::path}},
        {"config",
         "[get KEY | set KEY VALUE | reset KEY]",
         "list or change the settings",
         {},
         {A::configVerb, A::settingKey, A::settingValue}},
        {"show",
         "popup|dashboard|settings [PAGE]",
         "open a window of the running tray application",
         {},
         {A::window, A::settingsPage}},
        {"quit", "", "quit the running tray application", {}, {}},
    };
    return table;
}

std::string joined(const std::vector<std::string>& words, std::string_view separator = " ") {
    std::string result;
    for (const auto& word : words) {
        result += (result.empty() ? "" : std::string(separator)) + word;
    }
    return result;
}

std::vector<std::string> settingKeys() {
    std::vector<std::string> keys;
    for (const auto& setting : settingDefinitions) {
        keys.emplace_back(setting.key);
    }
    return keys;
}

std::vector<std::string> settingValues() {
    std::vector<std::string> values{"true", "false"};
    for (const auto& setting : settingDefinitions) {
        for (const auto choice : setting.choices) {
            values.emplace_back(choice);
        }
    }
    return values;
}

std::string wordsFor(ArgumentKind kind) {
    switch (kind) {
    case ArgumentKind::service:
        return "codex claude";
    case ArgumentKind::widgetFormat:
        return "json text waybar";
    case ArgumentKind::configVerb:
        return "get set reset";
    case ArgumentKind::settingKey:
        return joined(settingKeys());
    case ArgumentKind::settingValue:
        return joined(settingValues());
    case ArgumentKind::window:
        return "popup dashboard settings";
    case ArgumentKind::settingsPage:
        return "accounts menuBar general";
    case ArgumentKind::path:
    case ArgumentKind::none:
        break;
    }
    return "";
}

// troff treats a leading dot or quote as a request and a backslash as an escape.
std::string troff(std::string_view text) {
    std::string escaped;
    for (const char character : text) {
        if (character == '\\') {
            escaped += "\\e";
        } else if (character == '-') {
            escaped += "\\-";
        } else {
            escaped += character;
        }
    }
    if (!escaped.empty() && (escaped.front() == '.' || escaped.front() == '\'')) {
        escaped.insert(0, "\\&");
    }
    return escaped;
}

} // namespace

std::span<const CommandSpec> commandTable() {
    return commands();
}

std::string commandLineUsage() {
    std::ostringstream text;
    text << "Usage: gaugewell [COMMAND] [OPTIONS]\n"
            "\n"
            "Shows how much of your Codex and Claude subscription allowances you have used.\n"
            "Without a command, starts the tray application (or shows the running one).\n"
            "\n"
            "Commands:\n";
    for (const auto& command : commands()) {
        std::string head = "  " + std::string(command.name);
        if (!command.synopsis.empty()) {
            head += " " + std::string(command.synopsis);
        }
        text << head;
        text << (head.size() < 34 ? std::string(34 - head.size(), ' ') : std::string("  ")) << command.summary
             << '\n';
    }
    text << "\n"
            "Options:\n"
            "  --json      print the records as JSON\n"
            "  --help      show this help\n"
            "  --version   show the version\n"
            "\n"
            "Exit status: 0 success, 1 a failed collection or operation, 2 a usage error.\n";
    return text.str();
}

std::string manualPage(std::string_view version) {
    std::ostringstream page;
    page << ".TH GAUGEWELL 1 \"\" \"gaugewell " << version << "\" \"User Commands\"\n"
         << ".SH NAME\ngaugewell \\- see your Codex and Claude allowances at a glance\n"
         << ".SH SYNOPSIS\n.B gaugewell\n[\\fICOMMAND\\fR] [\\fIOPTIONS\\fR]\n"
         << ".SH DESCRIPTION\n"
         << "Shows how much of your Codex and Claude subscription allowances you have used and when each "
            "window "
            "resets. Without a command, starts the tray application, or asks the one already running to show "
            "itself.\n"
         << ".SH COMMANDS\n";
    for (const auto& command : commands()) {
        page << ".TP\n.B " << troff(command.name);
        if (!command.synopsis.empty()) {
            page << " \\fR" << troff(command.synopsis);
        }
        page << "\n" << troff(command.summary) << ".\n";
    }
    page
        << ".SH OPTIONS\n.TP\n.B \\-\\-json\nprint the records as JSON.\n.TP\n.B \\-\\-help\nshow the help.\n"
        << ".TP\n.B \\-\\-version\nshow the version.\n"
        << ".SH SETTINGS\nKeys for \\fBgaugewell config\\fR:\n";
    for (const auto& setting : settingDefinitions) {
        page << ".TP\n.B " << troff(setting.key) << "\ndefault " << troff(setting.defaultValue) << "\n";
    }
    page << ".SH ENVIRONMENT\n.TP\n.B GAUGEWELL_WIDGET_PORT\nport of the widget feed (default 47392).\n"
         << ".TP\n.B GAUGEWELL_COLOR_SCHEME\n\\fBdark\\fR or \\fBlight\\fR, for desktops that do not say.\n"
         << ".TP\n.B QT_LOGGING_RULES\nturns on diagnostic logging, for example \\fBgaugewell.*=true\\fR.\n"
         << ".SH EXIT STATUS\n0 success, 1 a failed collection or operation, 2 a usage error.\n"
         << ".SH FILES\n.TP\n.I $XDG_CONFIG_HOME/gaugewell/defaults.json\nthe settings.\n";
    return page.str();
}

std::string bashCompletion() {
    std::ostringstream script;
    script
        << "# bash completion for gaugewell\n_gaugewell() {\n"
        << "  local current=${COMP_WORDS[COMP_CWORD]} command=${COMP_WORDS[1]} position=$((COMP_CWORD - 1))\n"
        << "  if ((COMP_CWORD == 1)); then\n    COMPREPLY=($(compgen -W \"";
    std::vector<std::string> names;
    for (const auto& command : commands()) {
        names.emplace_back(command.name);
    }
    script << joined(names)
           << " --help --version\" -- \"$current\"))\n    return\n  fi\n  case $command in\n";
    for (const auto& command : commands()) {
        script << "    " << command.name << ")\n      case $position in\n";
        for (std::size_t index = 0; index < command.arguments.size(); ++index) {
            const auto kind = command.arguments[index];
            script << "        " << index + 1 << ") ";
            if (kind == ArgumentKind::path) {
                script << "COMPREPLY=($(compgen -f -- \"$current\")) ;;\n";
            } else {
                std::string words = wordsFor(kind);
                for (const auto flag : command.flags) {
                    words += " " + std::string(flag);
                }
                script << "COMPREPLY=($(compgen -W \"" << words << "\" -- \"$current\")) ;;\n";
            }
        }
        std::string flags;
        for (const auto flag : command.flags) {
            flags += (flags.empty() ? "" : " ") + std::string(flag);
        }
        script << "        *) COMPREPLY=($(compgen -W \"" << flags
               << "\" -- \"$current\")) ;;\n      esac ;;\n";
    }
    script << "  esac\n}\ncomplete -F _gaugewell gaugewell\n";
    return script.str();
}

std::string zshCompletion() {
    std::ostringstream script;
    script << "#compdef gaugewell\n# zsh completion for gaugewell\n_gaugewell() {\n  local -a commands\n  "
              "commands=(\n";
    for (const auto& command : commands()) {
        std::string summary(command.summary);
        for (auto& character : summary) {
            if (character == '\'') {
                character = '`';
            }
        }
        script << "    '" << command.name << ":" << summary << "'\n";
    }
    script << "  )\n  if ((CURRENT == 2)); then\n    _describe command commands\n    return\n  fi\n"
           << "  case ${words[2]} in\n";
    for (const auto& command : commands()) {
        script << "    " << command.name << ")\n      case $((CURRENT - 2)) in\n";
        for (std::size_t index = 0; index < command.arguments.size(); ++index) {
            const auto kind = command.arguments[index];
            script << "        " << index + 1 << ") "
                   << (kind == ArgumentKind::path ? std::string("_files") : "compadd -- " + wordsFor(kind))
                   << " ;;\n";
        }
        script << "      esac ;;\n";
    }
    script << "  esac\n}\n_gaugewell \"$@\"\n";
    return script.str();
}

} // namespace gaugewell
