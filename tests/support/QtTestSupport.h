#pragma once

#include <QCoreApplication>
#include <QEventLoop>
#include <QFuture>
#include <QFutureWatcher>
#include <QTimer>

namespace gaugewell::testing {

// One application object for the whole test process, created on first use and never destroyed:
// Qt allows only one, and tearing it down at exit races the bus threads of QtDBus.
inline QCoreApplication& coreApplication() {
    static QCoreApplication* application = [] {
        if (QCoreApplication::instance() != nullptr) {
            return QCoreApplication::instance();
        }
        static int argc = 1;
        static char name[] = "GaugewellModelTests";
        static char* argv[] = {name, nullptr};
        return new QCoreApplication(argc, argv);
    }();
    return *application;
}

// Runs the event loop until `sender` emits `signal` or the time is up; true when it was emitted.
template <class Sender, class Signal>
bool waitForSignal(const Sender* sender, Signal signal, int timeoutMilliseconds = 10'000) {
    QEventLoop loop;
    QTimer deadline;
    deadline.setSingleShot(true);
    bool emitted = false;
    QObject::connect(sender, signal, &loop, [&] {
        emitted = true;
        loop.quit();
    });
    QObject::connect(&deadline, &QTimer::timeout, &loop, &QEventLoop::quit);
    deadline.start(timeoutMilliseconds);
    loop.exec();
    return emitted;
}

// Runs the event loop until the future finishes or the time is up; true when it finished.
template <class T> bool waitForFuture(const QFuture<T>& future, int timeoutMilliseconds = 10'000) {
    if (future.isFinished()) {
        return true;
    }
    QFutureWatcher<T> watcher;
    QEventLoop loop;
    QTimer deadline;
    deadline.setSingleShot(true);
    QObject::connect(&watcher, &QFutureWatcherBase::finished, &loop, &QEventLoop::quit);
    QObject::connect(&deadline, &QTimer::timeout, &loop, &QEventLoop::quit);
    watcher.setFuture(future);
    deadline.start(timeoutMilliseconds);
    if (!future.isFinished()) {
        loop.exec();
    }
    return future.isFinished();
}

} // namespace gaugewell::testing
