#include "TrayApplication.h"

#include "GaugewellUI/Application/ApplicationServices.h"
#include "GaugewellUI/Desktop/DesktopApplicationService.h"
#include "GaugewellUI/Desktop/RunningInstance.h"
#include "GaugewellUI/Notifications/DBusNotificationBackend.h"
#include "GaugewellUI/Views/App/GaugewellAppDelegate.h"
#include "GaugewellUI/Views/DesignSystem/DesktopAppearance.h"
#include "InterruptWatcher.h"
#include "UsagePresentation/FormattingLocale.h"

#include <QApplication>
#include <QIcon>
#include <QLocale>
#include <QTranslator>
#include <csignal>
#include <iostream>

// Resources compiled into a static library are registered only when asked for by name.
static void registerResources() {
    Q_INIT_RESOURCE(resources);
}

namespace gaugewell {

int runTrayApplication(int argc, char** argv) {
    QApplication application(argc, argv);
    registerResources();
    QApplication::setApplicationName(QStringLiteral("gaugewell"));
    QApplication::setApplicationVersion(QStringLiteral(GAUGEWELL_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("app.gaugewell.Gaugewell"));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/app/app.gaugewell.Gaugewell.svg")));
    // The user's language where Gaugewell speaks it (LANGUAGE, then LC_ALL, LC_MESSAGES, LANG).
    QTranslator translator;
    if (translator.load(QLocale(), QStringLiteral("gaugewell"), QStringLiteral("_"),
                        QStringLiteral(":/i18n"))) {
        QApplication::installTranslator(&translator);
        setFormattingLanguage(translator.language().toStdString());
    }
    // Gaugewell lives in the tray: closing its last window must not end it.
    QApplication::setQuitOnLastWindowClosed(false);

    DesktopApplicationService identity;
    const auto registration = identity.registerOnBus();
    if (registration == DesktopApplicationService::Registration::alreadyRunning) {
        const auto shown = askRunningInstance(std::nullopt);
        if (!shown) {
            std::cerr << "gaugewell: " << describe(shown.error()) << '\n';
            return 1;
        }
        return 0;
    }
    if (registration == DesktopApplicationService::Registration::noSessionBus) {
        std::cerr
            << "gaugewell: no D-Bus session bus; running without notifications or single-instance check\n";
    }

    auto services = ApplicationServices::make(currentProcessEnvironment(), openWithDesktopBrowser);
    if (!services) {
        std::cerr << "gaugewell: " << services.error() << '\n';
        return 2;
    }

    DesktopAppearance appearance;
    appearance.start(!DesktopAppearance::desktopProvidesPalette());

    GaugewellAppDelegate delegate(std::move(services).value(), std::make_shared<DBusNotificationBackend>());
    QObject::connect(&identity, &DesktopApplicationService::activated, &delegate,
                     &GaugewellAppDelegate::activate);
    QObject::connect(&identity, &DesktopApplicationService::requested, &delegate,
                     &GaugewellAppDelegate::perform);
    QObject::connect(&delegate, &GaugewellAppDelegate::quitRequested, &application, &QCoreApplication::quit,
                     Qt::QueuedConnection);
    QObject::connect(&application, &QCoreApplication::aboutToQuit, &delegate,
                     &GaugewellAppDelegate::applicationWillTerminate);
    // Ctrl-C in a terminal and a desktop's logout end the event loop, so that quitting runs in order.
    const InterruptWatcher quitOnSignals(
        [&application] {
            QMetaObject::invokeMethod(&application, &QCoreApplication::quit, Qt::QueuedConnection);
        },
        {SIGINT, SIGTERM});

    delegate.applicationDidFinishLaunching();
    return application.exec();
}

} // namespace gaugewell
