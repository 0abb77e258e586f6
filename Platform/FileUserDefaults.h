#pragma once

#include "UserDefaults.h"

#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <sys/types.h>

namespace gaugewell {

// Settings in a JSON object file, private to the user (0600), replaced atomically on every
// change. Several processes may share the file: writes are serialised by a lock file and
// reads pick up another process's changes. A file that cannot be read or parsed is renamed
// aside, never overwritten, and the defaults apply.
class FileUserDefaults final : public UserDefaults {
public:
    explicit FileUserDefaults(std::filesystem::path file);

    // $XDG_CONFIG_HOME/gaugewell/defaults.json, or ~/.config/gaugewell/defaults.json.
    static std::filesystem::path standardLocation();

    std::optional<UserDefaultsValue> object(const std::string& key) const override;

    // Re-reads the file if another process changed it; observers then hear the empty key.
    bool reloadIfChanged();

    const std::filesystem::path& path() const { return file; }
    // Where an unusable file was kept, if one was found.
    std::optional<std::filesystem::path> setAsidePath() const;

    static constexpr std::uintmax_t maximumFileBytes = 1 << 20;

protected:
    bool store(const std::string& key, std::optional<UserDefaultsValue> value) override;

private:
    struct Identity {
        ino_t inode = 0;
        off_t size = -1;
        long long modifiedNanoseconds = 0;
        bool operator==(const Identity&) const = default;
    };
    using Values = std::map<std::string, UserDefaultsValue>;

    // With `mutex` held.
    bool refresh() const;
    std::optional<Identity> currentIdentity() const;
    Values loadOrSetAside() const;
    bool write(const Values& values) const;

    const std::filesystem::path file;
    mutable std::mutex mutex;
    mutable Values values;
    mutable std::optional<Identity> loadedIdentity;
    mutable bool loadedOnce = false;
    mutable std::optional<std::filesystem::path> setAside;
    mutable bool blocked = false;
};

} // namespace gaugewell
