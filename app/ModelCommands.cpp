#include "CommandLine.h"
#include "GaugewellUI/Application/ApplicationCore.h"
#include "GaugewellUI/Diagnostics/DiagnosticsReport.h"
#include "GaugewellUI/Diagnostics/SanitizedProviderDiagnostics.h"
#include "GaugewellUI/Notifications/DBusNotificationBackend.h"
#include "GaugewellUI/Notifications/UsageNotificationController.h"
#include "GaugewellUI/WidgetFeed/WidgetLiveServer.h"
#include "GaugewellUI/WidgetFeed/WidgetSnapshotBuilder.h"
#include "InterruptWatcher.h"
#include "UsagePresentation/MenuBarConfiguration.h"
#include "UsagePresentation/MenuBarProjection.h"
#include "UsagePresentation/RelativeTimeFormatter.h"
#include "UsagePresentation/ResetTimeFormatter.h"
#include "UsagePresentation/UsagePercentage.h"
#include "UsagePresentation/WindowDisplayName.h"
#include "WidgetOutput.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFutureWatcher>
#include <QTimer>
#include <csignal>
#include <ostream>
#include <sys/resource.h>

namespace gaugewell {

namespace {

QCoreApplication& application() {
    if (QCoreApplication::instance() == nullptr) {
        static int argc = 1;
        static char name[] = "gaugewell";
        static char* argv[] = {name, nullptr};
        new QCoreApplication(argc, argv); // lives as long as the process
    }
    return *QCoreApplication::instance();
}

// Runs the event loop until the future is done; a refresh is bounded by its collectors' own deadlines.
bool waitFor(const QFuture<void>& future, std::chrono::milliseconds limit = std::chrono::minutes(2)) {
    if (future.isFinished()) {
        return true;
    }
    QFutureWatcher<void> watcher;
    QEventLoop loop;
    QTimer deadline;
    deadline.setSingleShot(true);
    QObject::connect(&watcher, &QFutureWatcherBase::finished, &loop, &QEventLoop::quit);
    QObject::connect(&deadline, &QTimer::timeout, &loop, &QEventLoop::quit);
    watcher.setFuture(future);
    deadline.start(static_cast<int>(limit.count()));
    if (!future.isFinished()) {
        loop.exec();
    }
    return future.isFinished();
}

bool parseFlags(const std::vector<std::string>& arguments, std::initializer_list<const char*> allowed,
                std::map<std::string, bool>& flags) {
    for (std::size_t index = 1; index < arguments.size(); ++index) {
        bool known = false;
        for (const char* flag : allowed) {
            known = known || arguments[index] == flag;
        }
        if (!known) {
            return false;
        }
        flags[arguments[index]] = true;
    }
    return true;
}

} // namespace

int CommandLine::status(const std::vector<std::string>& arguments, std::ostream& out,
                        std::ostream& err) const {
    std::map<std::string, bool> flags;
    if (!parseFlags(arguments, {"--json", "--help", "-h"}, flags)) {
        err << "Usage: gaugewell status [--json]\n";
        return usageError;
    }
    if (flags["--help"] || flags["-h"]) {
        out << "Usage: gaugewell status [--json]\n  Refreshes both services once and shows their usage.\n";
        return success;
    }
    application();
    const auto model = dependencies.makeModel({});
    if (!waitFor(model->refresh(RefreshTrigger::manual))) {
        err << "gaugewell: the refresh did not finish in time\n";
        return failure;
    }
    const Date now = dependencies.now();
    if (flags["--json"]) {
        out << WidgetSnapshotBuilder::build(*model).json() << '\n';
        return success;
    }

    const IcuResetTimeFormatter resetTime;
    const RelativeTimeFormatter relativeTime;
    const auto projection = MenuBarProjection::project(
        model->menuSnapshots(), MenuBarConfiguration::fromDefaults(*dependencies.defaults()), resetTime);
    // The tray shows each provider's mark beside its text; a terminal gets the name instead.
    std::string menuText;
    for (const auto& entry : projection.entries) {
        const bool named = entry.text.rfind(entry.displayName, 0) == 0;
        menuText += (menuText.empty() ? "" : "  ") +
                    (named ? entry.text : entry.displayName + (entry.text.empty() ? "" : " " + entry.text));
    }
    out << "Menu bar: " << (menuText.empty() ? projection.accessibilityLabel : menuText) << "\n";
    for (const auto& provider : model->providers()) {
        const auto connection = model->connectionState(provider.service);
        out << '\n' << provider.descriptor.displayName() << ": " << rawValue(provider.availability);
        if (connection.detail) {
            out << " (" << *connection.detail << ")";
        }
        out << '\n';
        for (const auto& window : provider.currentWindows()) {
            out << "  " << windowDisplayName(window) << ": ";
            if (window.usedFraction()) {
                out << percentageText(
                           displayedPercentage(*window.usedFraction(), PercentageDisplayMode::consumed)
                               .value_or(0))
                    << " used";
            } else {
                out << "usage unknown";
            }
            if (window.resetAt()) {
                out << ", resets " << resetTime.format(*window.resetAt()) << " ("
                    << relativeTime.format(*window.resetAt(), now) << ")";
            }
            out << '\n';
        }
        for (const auto& diagnostic : provider.diagnostics) {
            out << "  " << rawValue(diagnostic.severity()) << ' ' << diagnostic.code() << ": "
                << diagnostic.message() << '\n';
        }
    }
    return success;
}

int CommandLine::report(const std::vector<std::string>& arguments, std::ostream& out,
                        std::ostream& err) const {
    if (arguments.size() == 2 && (arguments[1] == "--help" || arguments[1] == "-h")) {
        out << "Usage: gaugewell report PATH\n  Writes a sanitised diagnostics report (no usage, no account "
               "data).\n";
        return success;
    }
    if (arguments.size() != 2 || arguments[1].starts_with("-")) {
        err << "Usage: gaugewell report PATH\n";
        return usageError;
    }
    application();
    const auto model = dependencies.makeModel({});
    if (!waitFor(model->refresh(RefreshTrigger::manual))) {
        err << "gaugewell: the refresh did not finish in time\n";
        return failure;
    }
    const auto text = diagnosticsReport(*model);
    if (const auto error = writeDiagnosticsReport(arguments[1], text)) {
        err << "gaugewell: " << describe(*error) << '\n';
        return failure;
    }
    out << "Diagnostics report written to " << arguments[1] << '\n';
    return success;
}

int CommandLine::daemon(const std::vector<std::string>& arguments, std::ostream& out,
                        std::ostream& err) const {
    if (arguments.size() == 2 && (arguments[1] == "--help" || arguments[1] == "-h")) {
        out << "Usage: gaugewell daemon\n  Runs without a tray: refreshes, notifies and serves the widget "
               "feed "
               "until stopped.\n";
        return success;
    }
    if (arguments.size() != 1) {
        err << "Usage: gaugewell daemon\n";
        return usageError;
    }
    // Desktop sessions often start us with a soft limit of 1024 descriptors; a burst on the widget
    // feed may hold several hundred while it is served in turn.
    rlimit files{};
    if (::getrlimit(RLIMIT_NOFILE, &files) == 0 && files.rlim_cur < std::min<rlim_t>(files.rlim_max, 4096)) {
        files.rlim_cur = std::min<rlim_t>(files.rlim_max, 4096);
        ::setrlimit(RLIMIT_NOFILE, &files);
    }
    auto& app = application();
    ApplicationCore core(dependencies.defaults(), std::make_shared<DBusNotificationBackend>(),
                         dependencies.makeModel);
    // Quitting is queued onto the loop itself, so that everything shuts down in order.
    const InterruptWatcher quitOnSignals(
        [&app] { QMetaObject::invokeMethod(&app, &QCoreApplication::quit, Qt::QueuedConnection); },
        {SIGINT, SIGTERM});
    core.start(true);
    const auto& server = core.widgetFeed();
    if (server.isListening()) {
        out << "Gaugewell is running; widget feed at http://127.0.0.1:" << server.port()
            << "/widget/v1. Ctrl-C stops it.\n"
            << std::flush;
    } else {
        err << "gaugewell: the widget feed is off: "
            << describe(server.lastError().value_or(WidgetLiveServerError::listenFailed)) << '\n'
            << std::flush;
    }
    app.exec();
    core.stop();
    return success;
}

int CommandLine::widget(const std::vector<std::string>& arguments, std::ostream& out,
                        std::ostream& err) const {
    std::optional<WidgetOutputFormat> format = WidgetOutputFormat::text;
    for (std::size_t index = 1; index < arguments.size(); ++index) {
        if (arguments[index] == "--help" || arguments[index] == "-h") {
            out << "Usage: gaugewell widget [--format json|text|waybar]\n"
                   "  Reads the running Gaugewell's widget feed (gaugewell daemon or the tray app).\n";
            return success;
        }
        if (arguments[index] == "--format" && index + 1 < arguments.size()) {
            format = widgetOutputFormat(arguments[++index]);
        } else if (arguments[index].starts_with("--format=")) {
            format = widgetOutputFormat(arguments[index].substr(9));
        } else {
            format.reset();
        }
        if (!format) {
            err << "Usage: gaugewell widget [--format json|text|waybar]\n";
            return usageError;
        }
    }
    const auto result = dependencies.fetchWidget();
    if (!result) {
        const std::string problem(describe(result.error()));
        if (*format == WidgetOutputFormat::waybar) {
            out << waybarUnavailableLine(problem) << '\n'; // a status bar still gets one valid line
        } else {
            err << "gaugewell: " << problem << '\n';
        }
        return failure;
    }
    out << widgetOutput(*result, *format, dependencies.now()) << '\n';
    return success;
}

} // namespace gaugewell
