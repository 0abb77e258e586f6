#include "FileUserDefaults.h"

#include "AtomicFile.h"
#include "UsageDomain/JsonValue.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <fstream>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace gaugewell {

namespace {

class LockFile {
public:
    explicit LockFile(const std::filesystem::path& path)
        : fd(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
        if (fd >= 0) {
            while (::flock(fd, LOCK_EX) != 0 && errno == EINTR) {
            }
        }
    }
    ~LockFile() {
        if (fd >= 0) {
            ::close(fd); // releases the lock
        }
    }
    bool held() const { return fd >= 0; }

private:
    int fd;
};

std::string timestamp() {
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
    gmtime_r(&now, &utc);
    char buffer[32];
    std::strftime(buffer, sizeof buffer, "%Y%m%dT%H%M%SZ", &utc);
    return buffer;
}

JsonValue encode(const UserDefaultsValue& value) {
    if (const auto* flag = std::get_if<bool>(&value)) {
        return JsonValue(*flag);
    }
    if (const auto* number = std::get_if<double>(&value)) {
        return JsonValue::number(*number);
    }
    return JsonValue(std::get<std::string>(value));
}

} // namespace

FileUserDefaults::FileUserDefaults(std::filesystem::path file)
    : file(std::move(file)) {}

std::filesystem::path FileUserDefaults::standardLocation() {
    const char* config = std::getenv("XDG_CONFIG_HOME");
    std::filesystem::path base;
    if (config != nullptr && config[0] == '/') {
        base = config;
    } else {
        const char* home = std::getenv("HOME");
        base = std::filesystem::path(home != nullptr ? home : "/") / ".config";
    }
    return base / "gaugewell" / "defaults.json";
}

std::optional<FileUserDefaults::Identity> FileUserDefaults::currentIdentity() const {
    struct stat info {};
    if (::stat(file.c_str(), &info) != 0) {
        return std::nullopt;
    }
    return Identity{info.st_ino, info.st_size,
                    static_cast<long long>(info.st_mtim.tv_sec) * 1'000'000'000LL + info.st_mtim.tv_nsec};
}

FileUserDefaults::Values FileUserDefaults::loadOrSetAside() const {
    std::error_code error;
    if (!std::filesystem::exists(file, error)) {
        blocked = false;
        return {};
    }
    std::optional<Values> loaded;
    const auto size = std::filesystem::file_size(file, error);
    std::ifstream stream(file, std::ios::binary);
    if (!error && size <= maximumFileBytes && stream) {
        const std::string text((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
        const auto json = parseJson(text);
        if (json && json->objectValue() != nullptr) {
            loaded = Values();
            for (const auto& [key, value] : *json->objectValue()) {
                if (const auto flag = value.boolValue()) {
                    loaded->insert_or_assign(key, *flag);
                } else if (const auto number = value.doubleValue()) {
                    loaded->insert_or_assign(key, *number);
                } else if (const auto* string = value.stringValue()) {
                    loaded->insert_or_assign(key, *string);
                }
                // Values of other JSON types are not ours to interpret; they are dropped on the next write.
            }
        }
    }
    if (loaded) {
        blocked = false;
        return *loaded;
    }
    // Unusable: keep it for the user to inspect and start from the defaults.
    auto aside = file;
    aside += ".unreadable-" + timestamp();
    for (int attempt = 1; std::filesystem::exists(aside, error); ++attempt) {
        aside = file;
        aside += ".unreadable-" + timestamp() + "-" + std::to_string(attempt);
    }
    std::filesystem::rename(file, aside, error);
    if (error) {
        blocked = true; // could not move it: writing now would destroy it
    } else {
        setAside = aside;
        blocked = false;
    }
    return {};
}

bool FileUserDefaults::refresh() const {
    const auto identity = currentIdentity();
    if (loadedOnce && identity == loadedIdentity) {
        return false;
    }
    values = loadOrSetAside();
    loadedIdentity = currentIdentity();
    loadedOnce = true;
    return true;
}

std::optional<UserDefaultsValue> FileUserDefaults::object(const std::string& key) const {
    const std::lock_guard lock(mutex);
    refresh();
    const auto entry = values.find(key);
    return entry == values.end() ? std::nullopt : std::optional(entry->second);
}

bool FileUserDefaults::reloadIfChanged() {
    bool changed;
    {
        const std::lock_guard lock(mutex);
        const bool wasLoaded = loadedOnce;
        changed = refresh() && wasLoaded;
    }
    if (changed) {
        notify(std::string());
    }
    return changed;
}

std::optional<std::filesystem::path> FileUserDefaults::setAsidePath() const {
    const std::lock_guard lock(mutex);
    return setAside;
}

bool FileUserDefaults::store(const std::string& key, std::optional<UserDefaultsValue> value) {
    const std::lock_guard lock(mutex);
    std::error_code error;
    std::filesystem::create_directories(file.parent_path(), error);
    ::chmod(file.parent_path().c_str(), 0700);
    auto lockPath = file;
    lockPath += ".lock";
    const LockFile processLock(lockPath);
    if (!processLock.held()) {
        return false;
    }
    // Start from what is on disk now: another process may have written since we read.
    loadedOnce = false;
    refresh();
    if (blocked) {
        return false;
    }
    Values updated = values;
    if (value) {
        updated.insert_or_assign(key, std::move(*value));
    } else {
        updated.erase(key);
    }
    if (!write(updated)) {
        return false;
    }
    values = std::move(updated);
    loadedIdentity = currentIdentity();
    return true;
}

bool FileUserDefaults::write(const Values& updated) const {
    JsonValue::Object members;
    for (const auto& [key, value] : updated) {
        members.emplace_back(key, encode(value));
    }
    const std::string text = JsonValue(std::move(members)).serialized() + "\n";

    return replaceFileAtomically(file, text, 0600).hasValue();
}

} // namespace gaugewell
