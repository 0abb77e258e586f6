#include "AtomicFile.h"

#include "SecureRandom.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace gaugewell {

namespace {

constexpr int temporaryNameAttempts = 8;

std::string randomSuffix() {
    static constexpr char digits[] = "0123456789abcdef";
    std::string suffix;
    for (const std::byte byte : SecureRandom::bytes(8)) {
        suffix.push_back(digits[std::to_integer<int>(byte) >> 4]);
        suffix.push_back(digits[std::to_integer<int>(byte) & 0x0f]);
    }
    return suffix;
}

} // namespace

std::optional<int> replaceFileAtomically(const std::filesystem::path& destination, std::string_view contents,
                                         mode_t mode) {
    if (destination.filename().empty()) {
        return EISDIR;
    }
    const auto folder =
        destination.parent_path().empty() ? std::filesystem::path(".") : destination.parent_path();
    std::filesystem::path temporary;
    int fd = -1;
    for (int attempt = 0; attempt < temporaryNameAttempts && fd < 0; ++attempt) {
        temporary = folder / ("." + destination.filename().string() + "." + randomSuffix() + ".tmp");
        fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode);
        if (fd < 0 && errno != EEXIST) {
            return errno;
        }
    }
    if (fd < 0) {
        return EEXIST;
    }
    const auto fail = [&](int error) {
        ::close(fd);
        ::unlink(temporary.c_str());
        return std::optional(error);
    };
    std::size_t written = 0;
    while (written < contents.size()) {
        const ssize_t count = ::write(fd, contents.data() + written, contents.size() - written);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return fail(count < 0 ? errno : EIO);
        }
        written += static_cast<std::size_t>(count);
    }
    // The mode asked for, whatever the umask took away (a settings file must stay 0600, not wider).
    if (::fchmod(fd, mode) != 0 || ::fsync(fd) != 0) {
        return fail(errno);
    }
    if (::close(fd) != 0) {
        const int error = errno;
        ::unlink(temporary.c_str());
        return error;
    }
    if (::rename(temporary.c_str(), destination.c_str()) != 0) {
        const int error = errno;
        ::unlink(temporary.c_str());
        return error;
    }
    // Make the rename itself durable; a failure here no longer loses the contents.
    const int folderFd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folderFd >= 0) {
        ::fsync(folderFd);
        ::close(folderFd);
    }
    return std::nullopt;
}

} // namespace gaugewell
