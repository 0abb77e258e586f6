#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>
#include <memory>

namespace gaugewell {

class FileUserDefaults;

// Picks up changes another process makes to the settings file (`gaugewell config set`,
// `gaugewell connect`): the store re-reads it and its observers hear of it, as they do of our own
// changes. The folder is watched, since an atomic replace gives the file a new inode.
class SettingsFileWatcher : public QObject {
    Q_OBJECT

public:
    explicit SettingsFileWatcher(std::shared_ptr<FileUserDefaults> defaults, QObject* parent = nullptr);

private:
    void watch();

    std::shared_ptr<FileUserDefaults> defaults;
    QFileSystemWatcher watcher;
    QTimer settle;
};

} // namespace gaugewell
