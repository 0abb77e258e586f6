#include "CommandLine.h"

#include "CommandLineArguments.h"
#include "CommandTable.h"
#include "ProviderReport.h"

#include <algorithm>
#include <ostream>

namespace gaugewell {

namespace {

#ifndef GAUGEWELL_VERSION
#define GAUGEWELL_VERSION "0.0.0"
#endif

} // namespace

// `<service> [--json]` in any order; anything else is a usage error.
std::optional<ServiceArguments> parseServiceArguments(const std::vector<std::string>& arguments) {
    ServiceArguments parsed;
    for (std::size_t index = 1; index < arguments.size(); ++index) {
        const auto& argument = arguments[index];
        if (argument == "--json") {
            parsed.json = true;
        } else if (argument == "--help" || argument == "-h") {
            parsed.help = true;
        } else if (!argument.starts_with("-") && parsed.service.empty()) {
            parsed.service = argument;
        } else {
            return std::nullopt;
        }
    }
    if (parsed.service.empty() && !parsed.help) {
        return std::nullopt;
    }
    return parsed;
}

CommandLine::CommandLine(Dependencies dependencies)
    : dependencies(std::move(dependencies)) {}

std::string CommandLine::usage() {
    return commandLineUsage();
}

int CommandLine::run(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) const {
    if (arguments.empty() || arguments[0] == "--help" || arguments[0] == "-h" || arguments[0] == "help") {
        out << usage();
        return success;
    }
    if (arguments[0] == "--version") {
        out << "gaugewell " << GAUGEWELL_VERSION << '\n';
        return success;
    }
    if (arguments[0] == "probe") {
        return probe(arguments, out, err);
    }
    if (arguments[0] == "collect") {
        return collect(arguments, out, err);
    }
    if (arguments[0] == "accounts") {
        return accounts(arguments, out, err);
    }
    if (arguments[0] == "connect") {
        return connect(arguments, out, err);
    }
    if (arguments[0] == "disconnect") {
        return disconnect(arguments, out, err);
    }
    if (arguments[0] == "status") {
        return status(arguments, out, err);
    }
    if (arguments[0] == "report") {
        return report(arguments, out, err);
    }
    if (arguments[0] == "daemon") {
        return daemon(arguments, out, err);
    }
    if (arguments[0] == "widget") {
        return widget(arguments, out, err);
    }
    if (arguments[0] == "config") {
        return config(arguments, out, err);
    }
    if (arguments[0] == "show") {
        return show(arguments, out, err);
    }
    if (arguments[0] == "quit") {
        return quit(arguments, out, err);
    }
    err << "gaugewell: unknown command '" << arguments[0] << "'\n\n" << usage();
    return usageError;
}

int CommandLine::probe(const std::vector<std::string>& arguments, std::ostream& out,
                       std::ostream& err) const {
    const auto parsed = parseServiceArguments(arguments);
    if (parsed && parsed->help) {
        out << "Usage: gaugewell probe codex|claude [--json]\n";
        return success;
    }
    const auto provider = parsed ? dependencies.makeProvider(parsed->service) : nullptr;
    if (!provider) {
        err << "Usage: gaugewell probe codex|claude [--json]\n";
        return usageError;
    }
    const auto result = provider->probe();
    if (parsed->json) {
        out << ProviderReport::probeJson(result).serialized() << '\n';
    } else {
        out << ProviderReport::probeText(result);
    }
    const bool usable = result.availability() == ProviderAvailability::available ||
                        result.availability() == ProviderAvailability::availableWithLimitations;
    return usable ? success : failure;
}

int CommandLine::collect(const std::vector<std::string>& arguments, std::ostream& out,
                         std::ostream& err) const {
    const auto parsed = parseServiceArguments(arguments);
    if (parsed && parsed->help) {
        out << "Usage: gaugewell collect codex|claude [--json]\n";
        return success;
    }
    const auto provider = parsed ? dependencies.makeProvider(parsed->service) : nullptr;
    if (!provider) {
        err << "Usage: gaugewell collect codex|claude [--json]\n";
        return usageError;
    }
    const Date observedAt = dependencies.now();
    // A one-off collection from the command line is filed under a connection of its own.
    const auto result = provider->collect(UsageCollectionRequest(Uuid::random(), observedAt));
    if (parsed->json) {
        out << ProviderReport::collectionJson(result).serialized() << '\n';
    } else {
        out << ProviderReport::collectionText(result, dependencies.now());
    }
    return result.hasErrorDiagnostic() ? failure : success;
}

} // namespace gaugewell
