#include "SettingsFileWatcher.h"

#include "Platform/FileUserDefaults.h"

#include <QDir>

namespace gaugewell {

SettingsFileWatcher::SettingsFileWatcher(std::shared_ptr<FileUserDefaults> defaults, QObject* parent)
    : QObject(parent)
    , defaults(std::move(defaults)) {
    // A save is a write, a rename and a lock file: one re-read after the burst settles.
    settle.setSingleShot(true);
    settle.setInterval(50);
    connect(&settle, &QTimer::timeout, this, [this] {
        this->defaults->reloadIfChanged();
        watch();
    });
    connect(&watcher, &QFileSystemWatcher::directoryChanged, &settle, qOverload<>(&QTimer::start));
    connect(&watcher, &QFileSystemWatcher::fileChanged, &settle, qOverload<>(&QTimer::start));
    watch();
}

void SettingsFileWatcher::watch() {
    const QString folder = QString::fromStdString(defaults->path().parent_path().string());
    // Made if missing, so that it can be watched before the first save.
    QDir().mkpath(folder);
    if (!watcher.directories().contains(folder)) {
        watcher.addPath(folder);
    }
}

} // namespace gaugewell
