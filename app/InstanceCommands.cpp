#include "CommandLine.h"

#include <ostream>

namespace gaugewell {

namespace {

constexpr const char* showUsage =
    "Usage: gaugewell show popup|dashboard|settings [accounts|menuBar|general]\n";

int answer(const Status<RunningInstanceError>& status, std::ostream& err) {
    if (status) {
        return CommandLine::success;
    }
    err << "gaugewell: " << describe(status.error()) << '\n';
    return CommandLine::failure;
}

} // namespace

int CommandLine::show(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) const {
    if (arguments.size() == 2 && (arguments[1] == "--help" || arguments[1] == "-h")) {
        out << showUsage << "  Opens a window of the running Gaugewell.\n";
        return success;
    }
    const bool known = arguments.size() >= 2 && arguments.size() <= 3 &&
                       (arguments[1] == "popup" || arguments[1] == "dashboard" || arguments[1] == "settings");
    const auto request =
        known ? ApplicationRequest::parse(arguments[1], arguments.size() == 3
                                                            ? std::optional<std::string_view>(arguments[2])
                                                            : std::nullopt)
              : std::nullopt;
    if (!request) {
        err << showUsage;
        return usageError;
    }
    return answer(dependencies.askRunningInstance(request), err);
}

int CommandLine::quit(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) const {
    if (arguments.size() == 2 && (arguments[1] == "--help" || arguments[1] == "-h")) {
        out << "Usage: gaugewell quit\n  Quits the running Gaugewell.\n";
        return success;
    }
    if (arguments.size() != 1) {
        err << "Usage: gaugewell quit\n";
        return usageError;
    }
    return answer(dependencies.askRunningInstance(ApplicationRequest{ApplicationAction::quit, std::nullopt}),
                  err);
}

} // namespace gaugewell
