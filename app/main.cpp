#include "GaugewellUI/Application/ApplicationServices.h"
#include "GaugewellUI/Desktop/RunningInstance.h"
#include "app/CommandLine.h"
#include "app/TrayApplication.h"

#include <QCoreApplication>
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
    const auto feedEndpoint = gaugewell::WidgetFeedEndpoint::fromEnvironment();
    if (!feedEndpoint) {
        std::cerr << "gaugewell: " << gaugewell::WidgetFeedEndpoint::invalidPortMessage << '\n';
        return 2;
    }
    if (argc == 1) {
        return gaugewell::runTrayApplication(argc, argv);
    }

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
            const auto known = gaugewell::fromRawValue<gaugewell::ProviderService>(service);
            return known ? ensureServices().collectors[*known] : nullptr;
        },
        [&] { return ensureServices().authentication; },
        [] { return std::chrono::system_clock::now(); },
        [&] { return ensureServices().defaults; },
        [&](gaugewell::UsageAppModel::RefreshHooks hooks) {
            auto& services = ensureServices();
            return std::make_unique<gaugewell::UsageAppModel>(gaugewell::UsageAppModel::Dependencies{
                services.authentication, services.collectors, services.defaults, std::move(hooks)});
        },
        [&] { return gaugewell::WidgetUsageLoader::live(*feedEndpoint).fetch(); },
        [](const std::optional<gaugewell::ApplicationRequest>& request) {
            // A bus connection needs an application object's event loop to answer on.
            static int qtArgc = 1;
            static char name[] = "gaugewell";
            static char* qtArgv[] = {name, nullptr};
            static QCoreApplication application(qtArgc, qtArgv);
            return gaugewell::askRunningInstance(request);
        },
    });
    return commandLine.run(std::vector<std::string>(argv + 1, argv + argc), std::cout, std::cerr);
}
