#include "CommandLine.h"
#include "CommandLineArguments.h"
#include "InterruptWatcher.h"
#include "UsageDomain/JsonValue.h"

#include <ostream>

namespace gaugewell {

namespace {

std::optional<ProviderService> serviceNamed(const std::string& name) {
    return fromRawValue<ProviderService>(name);
}

void printState(std::ostream& out, const ProviderConnectionState& state) {
    out << displayName(state.service) << ": " << rawValue(state.status);
    if (state.detail) {
        out << " \u2014 " << *state.detail;
    }
    out << '\n';
}

} // namespace

int CommandLine::accounts(const std::vector<std::string>& arguments, std::ostream& out,
                          std::ostream& err) const {
    bool json = false;
    for (std::size_t index = 1; index < arguments.size(); ++index) {
        if (arguments[index] == "--json") {
            json = true;
        } else if (arguments[index] == "--help" || arguments[index] == "-h") {
            out << "Usage: gaugewell accounts [--json]\n";
            return success;
        } else {
            err << "Usage: gaugewell accounts [--json]\n";
            return usageError;
        }
    }
    const auto manager = dependencies.authentication();
    JsonValue::Array states;
    for (const auto service : allProviderServices) {
        const auto state = manager->status(service);
        if (json) {
            JsonValue::Object entry{{"service", JsonValue(std::string(rawValue(service)))},
                                    {"status", JsonValue(std::string(rawValue(state.status)))}};
            if (state.detail) {
                entry.emplace_back("detail", JsonValue(*state.detail));
            }
            states.emplace_back(std::move(entry));
        } else {
            printState(out, state);
        }
    }
    if (json) {
        out << JsonValue(std::move(states)).serialized() << '\n';
    }
    return success;
}

int CommandLine::connect(const std::vector<std::string>& arguments, std::ostream& out,
                         std::ostream& err) const {
    const auto parsed = parseServiceArguments(arguments);
    const auto service = parsed ? serviceNamed(parsed->service) : std::nullopt;
    if (parsed && parsed->help) {
        out << "Usage: gaugewell connect codex|claude\n  " << facts(ProviderService::codex).connectExplanation
            << "\n  " << facts(ProviderService::claude).connectExplanation << '\n';
        return success;
    }
    if (!service || parsed->json) {
        err << "Usage: gaugewell connect codex|claude\n";
        return usageError;
    }
    out << facts(*service).connectExplanation << "\nWaiting for the sign-in to complete (Ctrl-C cancels)...\n"
        << std::flush;
    const auto manager = dependencies.authentication();
    ProviderConnectionState state{*service, ProviderConnectionStatus::failed, std::nullopt};
    bool interrupted = false;
    {
        InterruptWatcher watcher([&manager] { manager->cancelLogin(); });
        state = manager->login(*service);
        interrupted = watcher.interrupted();
    }
    if (interrupted && !state.isAuthenticated()) {
        err << "Sign-in cancelled.\n";
        return failure;
    }
    printState(out, state);
    return state.isAuthenticated() ? success : failure;
}

int CommandLine::disconnect(const std::vector<std::string>& arguments, std::ostream& out,
                            std::ostream& err) const {
    const auto parsed = parseServiceArguments(arguments);
    const auto service = parsed ? serviceNamed(parsed->service) : std::nullopt;
    if (parsed && parsed->help) {
        out << "Usage: gaugewell disconnect codex|claude\n  "
            << facts(ProviderService::codex).disconnectExplanation << "\n  "
            << facts(ProviderService::claude).disconnectExplanation << '\n';
        return success;
    }
    if (!service || parsed->json) {
        err << "Usage: gaugewell disconnect codex|claude\n";
        return usageError;
    }
    const auto state = dependencies.authentication()->disconnect(*service);
    printState(out, state);
    return state.status == ProviderConnectionStatus::failed ? failure : success;
}

} // namespace gaugewell
