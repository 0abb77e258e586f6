#include "GaugewellUI/Model/ApplicationServices.h"
#include "app/CommandLine.h"

#include <chrono>
#include <csignal>
#include <iostream>
#include <optional>

namespace {

// A terminal user may be on another machine than their browser: always show the address too.
bool openSignInPage(const std::string& url) {
    std::cerr << "Opening your browser. If it does not open, visit:\n  " << url << "\n" << std::flush;
    gaugewell::openWithDesktopBrowser(url);
    return true;
}

} // namespace

int main(int argc, char** argv) {
    // A child that exits while we write to it must not take us down with it.
    std::signal(SIGPIPE, SIG_IGN);

    std::optional<gaugewell::ApplicationServices> services;
    const auto ensureServices = [&]() -> gaugewell::ApplicationServices& {
        if (!services) {
            auto made =
                gaugewell::ApplicationServices::make(gaugewell::currentProcessEnvironment(), openSignInPage);
            if (!made) {
                std::cerr << "gaugewell: " << made.error() << '\n';
                std::exit(2);
            }
            services = std::move(made).value();
        }
        return *services;
    };

    const gaugewell::CommandLine commandLine({
        [&](std::string_view service) -> std::shared_ptr<const gaugewell::GaugewellProvider> {
            if (service == "codex") {
                return ensureServices().codexCollector;
            }
            if (service == "claude") {
                return ensureServices().claudeCollector;
            }
            return nullptr;
        },
        [&] { return ensureServices().authentication; },
        [] { return std::chrono::system_clock::now(); },
        [&] { return ensureServices().defaults; },
        [&](gaugewell::UsageNotificationController* notifications) {
            auto& services = ensureServices();
            return std::make_unique<gaugewell::UsageAppModel>(gaugewell::UsageAppModel::Dependencies{
                services.authentication, services.codexCollector, services.claudeCollector, services.defaults,
                notifications});
        },
        [] { return gaugewell::WidgetUsageLoader::live().fetch(); },
    });
    return commandLine.run(std::vector<std::string>(argv + 1, argv + argc), std::cout, std::cerr);
}
