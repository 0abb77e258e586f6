#pragma once

#include <QObject>
#include <QString>
#include <filesystem>
#include <optional>
#include <string_view>

namespace gaugewell {

enum class LoginItemError { folderUnavailable, unusableExecutablePath, writeFailed, removeFailed };

std::string_view describe(LoginItemError error);

// Launch at login through XDG autostart: our entry in the user's autostart folder is the only
// state, read afresh by every refresh. Main thread; the file operations are small and local.
class LoginItemController : public QObject {
    Q_OBJECT

public:
    // `awaitingApproval` exists for platforms that ask the user first; XDG autostart never does.
    enum class State { enabled, disabled, awaitingApproval, unavailable };
    Q_ENUM(State)

    static constexpr std::string_view entryFileName = "app.gaugewell.Gaugewell.desktop";

    // `executablePath` is what the entry starts (normally runningExecutablePath()); `autostartFolder`
    // normally defaultAutostartFolder(). Call refresh() to read the state.
    LoginItemController(QString executablePath, std::filesystem::path autostartFolder,
                        QObject* parent = nullptr);

    // $XDG_CONFIG_HOME/autostart, or ~/.config/autostart when that is unset or relative; empty
    // when neither can be known.
    static std::filesystem::path defaultAutostartFolder();
    // The AppImage when running from one (the mounted path changes every launch), else the program.
    static QString runningExecutablePath();

    State state() const { return state_; }
    // The switch reads on while approval is pending too.
    bool isEnabled() const { return state_ == State::enabled || state_ == State::awaitingApproval; }
    // The last switch's error, translated; cleared by a switch that succeeds.
    std::optional<QString> failure() const;
    // What the settings row shows under the switch.
    std::optional<QString> detail() const;

    void refresh();
    void setEnabled(bool on);

signals:
    void changed();

private:
    std::filesystem::path entryPath() const { return autostartFolder / entryFileName; }
    bool folderIsUsable() const;
    std::optional<LoginItemError> enable();
    std::optional<LoginItemError> disable();

    QString executablePath;
    std::filesystem::path autostartFolder;
    State state_ = State::disabled;
    std::optional<LoginItemError> failure_;
};

} // namespace gaugewell
