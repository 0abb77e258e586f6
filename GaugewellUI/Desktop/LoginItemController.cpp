#include "LoginItemController.h"

#include "AutostartEntry.h"
#include "GaugewellUI/Support/Localizable.h"
#include "Platform/AtomicFile.h"
#include "Platform/SafeFileReader.h"

#include <QCoreApplication>
#include <chrono>
#include <cstdlib>
#include <unistd.h>

namespace gaugewell {

std::string_view describe(LoginItemError error) {
    switch (error) {
    case LoginItemError::folderUnavailable:
        return QT_TRANSLATE_NOOP("Localizable", "The autostart folder cannot be created or written.");
    case LoginItemError::unusableExecutablePath:
        return QT_TRANSLATE_NOOP("Localizable",
                                 "The location of the Gaugewell program cannot be used for launch at login.");
    case LoginItemError::writeFailed:
        return QT_TRANSLATE_NOOP("Localizable", "The autostart entry could not be written.");
    case LoginItemError::removeFailed:
        return QT_TRANSLATE_NOOP("Localizable", "The autostart entry could not be removed.");
    }
    return "The autostart entry could not be written.";
}

namespace {

// An autostart entry is a few hundred bytes; anything far larger is not one we could have written.
constexpr std::int64_t entrySizeLimit = 64 * 1024;

QString localized(std::string_view text) {
    return Localizable::translated(std::string(text));
}

bool isWritableFolder(const std::filesystem::path& path) {
    std::error_code error;
    return std::filesystem::is_directory(path, error) && ::access(path.c_str(), W_OK | X_OK) == 0;
}

} // namespace

LoginItemController::LoginItemController(QString executablePath, std::filesystem::path autostartFolder,
                                         QObject* parent)
    : QObject(parent)
    , executablePath(std::move(executablePath))
    , autostartFolder(std::move(autostartFolder)) {}

std::filesystem::path LoginItemController::defaultAutostartFolder() {
    // XDG: a relative value is to be ignored.
    if (const char* config = std::getenv("XDG_CONFIG_HOME"); config != nullptr && config[0] == '/') {
        return std::filesystem::path(config) / "autostart";
    }
    if (const char* home = std::getenv("HOME"); home != nullptr && home[0] == '/') {
        return std::filesystem::path(home) / ".config" / "autostart";
    }
    return {};
}

QString LoginItemController::runningExecutablePath() {
    if (const QString appImage = qEnvironmentVariable("APPIMAGE"); appImage.startsWith(u'/')) {
        return appImage;
    }
    return QCoreApplication::applicationFilePath();
}

std::optional<QString> LoginItemController::failure() const {
    if (!failure_) {
        return std::nullopt;
    }
    return localized(describe(*failure_));
}

std::optional<QString> LoginItemController::detail() const {
    switch (state_) {
    case State::enabled:
    case State::disabled:
        return failure();
    case State::awaitingApproval:
        return Localizable::tr("Approve Gaugewell in System Settings to finish enabling this.");
    case State::unavailable:
        if (failure_) {
            return failure();
        }
        return Localizable::tr("Launch at login needs a desktop session with an autostart folder.");
    }
    return failure();
}

bool LoginItemController::folderIsUsable() const {
    if (autostartFolder.empty() || !autostartFolder.is_absolute()) {
        return false;
    }
    // A missing folder is made on enabling, so what counts then is its nearest existing ancestor.
    std::error_code error;
    auto folder = autostartFolder;
    while (!std::filesystem::exists(std::filesystem::symlink_status(folder, error)) &&
           folder.has_parent_path() && folder != folder.parent_path()) {
        folder = folder.parent_path();
    }
    return isWritableFolder(folder);
}

void LoginItemController::refresh() {
    const auto previous = state_;
    if (!folderIsUsable()) {
        state_ = State::unavailable;
    } else {
        std::error_code error;
        if (!std::filesystem::exists(std::filesystem::symlink_status(entryPath(), error))) {
            state_ = State::disabled;
        } else {
            // An entry we cannot read still starts nothing we can vouch for: it counts as enabled
            // only when it reads and is not hidden.
            const auto contents =
                SafeFileReader().read(entryPath(), entrySizeLimit, std::chrono::milliseconds(0));
            state_ = contents && !desktopEntryIsHidden(*contents) ? State::enabled : State::disabled;
        }
    }
    if (state_ != previous) {
        emit changed();
    }
}

std::optional<LoginItemError> LoginItemController::enable() {
    if (!folderIsUsable()) {
        return LoginItemError::folderUnavailable;
    }
    const auto contents = autostartEntryContents(executablePath.toStdString());
    if (!contents) {
        return LoginItemError::unusableExecutablePath;
    }
    std::error_code error;
    std::filesystem::create_directories(autostartFolder, error);
    if (error || !isWritableFolder(autostartFolder)) {
        return LoginItemError::folderUnavailable;
    }
    if (!replaceFileAtomically(entryPath(), *contents, 0644)) {
        return LoginItemError::writeFailed;
    }
    return std::nullopt;
}

std::optional<LoginItemError> LoginItemController::disable() {
    if (autostartFolder.empty()) {
        return std::nullopt;
    }
    std::error_code error;
    std::filesystem::remove(entryPath(), error);
    if (error && error != std::errc::no_such_file_or_directory) {
        return LoginItemError::removeFailed;
    }
    return std::nullopt;
}

void LoginItemController::setEnabled(bool on) {
    const auto previous = failure_;
    failure_ = on ? enable() : disable();
    const auto stateBefore = state_;
    refresh();
    if (failure_ != previous && state_ == stateBefore) {
        emit changed();
    }
}

} // namespace gaugewell
