#include "AtomicFile.h"

#include "FileDescriptor.h"
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

Status<std::errc> replaceFileAtomically(const std::filesystem::path& destination, std::string_view contents,
                                        mode_t mode) {
    const auto failure = [](int error) { return unexpected(static_cast<std::errc>(error)); };
    if (destination.filename().empty()) {
        return failure(EISDIR);
    }
    const auto folder =
        destination.parent_path().empty() ? std::filesystem::path(".") : destination.parent_path();
    std::filesystem::path temporary;
    FileDescriptor file;
    for (int attempt = 0; attempt < temporaryNameAttempts && !file; ++attempt) {
        temporary = folder / ("." + destination.filename().string() + "." + randomSuffix() + ".tmp");
        file.reset(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode));
        if (!file && errno != EEXIST) {
            return failure(errno);
        }
    }
    if (!file) {
        return failure(EEXIST);
    }
    // The temporary goes whenever a step fails; errno is read before anything can change it.
    const auto fail = [&](int error) {
        file.reset();
        ::unlink(temporary.c_str());
        return failure(error);
    };
    std::size_t written = 0;
    while (written < contents.size()) {
        const ssize_t count = ::write(file.get(), contents.data() + written, contents.size() - written);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return fail(count < 0 ? errno : EIO);
        }
        written += static_cast<std::size_t>(count);
    }
    // The mode asked for, whatever the umask took away (a settings file must stay 0600, not wider).
    if (::fchmod(file.get(), mode) != 0 || ::fsync(file.get()) != 0) {
        return fail(errno);
    }
    if (::close(file.release()) != 0) {
        return fail(errno);
    }
    if (::rename(temporary.c_str(), destination.c_str()) != 0) {
        return fail(errno);
    }
    // Make the rename itself durable; a failure here no longer loses the contents.
    if (const FileDescriptor folderDescriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        folderDescriptor) {
        ::fsync(folderDescriptor.get());
    }
    return {};
}

} // namespace gaugewell
