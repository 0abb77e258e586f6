#include "SafeFileReader.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace gaugewell {

namespace {

class Descriptor {
public:
    explicit Descriptor(int fd)
        : fd(fd) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (fd >= 0) {
            ::close(fd);
        }
    }
    int fd;
};

SafeFileReaderError openError(int error) {
    switch (error) {
    case ENOENT:
    case ENOTDIR:
        return SafeFileReaderError::missing; // gone since we looked
    case EACCES:
    case EPERM:
        return SafeFileReaderError::permissionDenied;
    default:
        return SafeFileReaderError::unreadable;
    }
}

} // namespace

Expected<std::string, SafeFileReaderError> SafeFileReader::read(const std::filesystem::path& path,
                                                                std::int64_t maximumBytes,
                                                                std::chrono::nanoseconds retryDelay) const {
    auto first = readOnce(path, maximumBytes);
    if (first || first.error() != SafeFileReaderError::unreadable) {
        return first;
    }
    if (retryDelay > std::chrono::nanoseconds::zero()) {
        std::this_thread::sleep_for(retryDelay);
    }
    return readOnce(path, maximumBytes);
}

Expected<std::string, SafeFileReaderError> SafeFileReader::readOnce(const std::filesystem::path& path,
                                                                    std::int64_t maximumBytes) const {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        return unexpected(errno == EACCES ? SafeFileReaderError::permissionDenied
                                          : SafeFileReaderError::missing);
    }
    if (::access(path.c_str(), R_OK) != 0) {
        return unexpected(SafeFileReaderError::permissionDenied);
    }

    // Non-blocking, so that a path swapped for a FIFO since the checks cannot hold us in open();
    // what we opened is then checked, not the path.
    Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    if (file.fd < 0) {
        return unexpected(openError(errno));
    }
    if (::fstat(file.fd, &status) != 0 || !S_ISREG(status.st_mode)) {
        return unexpected(SafeFileReaderError::unreadable);
    }
    if (status.st_size > maximumBytes) {
        return unexpected(SafeFileReaderError::tooLarge);
    }

    // Files of the kernel's pseudo file systems report size 0 whatever they hold, so the size
    // above is only a first check; the reads themselves stop one byte past the limit.
    const auto budget = static_cast<std::uint64_t>(maximumBytes) + 1;
    std::string bytes;
    bytes.reserve(static_cast<std::size_t>(
        std::min<std::uint64_t>(static_cast<std::uint64_t>(status.st_size) + 1, budget)));
    char chunk[65536];
    while (bytes.size() < budget) {
        const auto request =
            static_cast<std::size_t>(std::min<std::uint64_t>(sizeof chunk, budget - bytes.size()));
        const ssize_t got = ::read(file.fd, chunk, request);
        if (got < 0) {
            if (errno == EINTR) {
                continue;
            }
            return unexpected(errno == EACCES || errno == EPERM ? SafeFileReaderError::permissionDenied
                                                                : SafeFileReaderError::unreadable);
        }
        if (got == 0) {
            break;
        }
        bytes.append(chunk, static_cast<std::size_t>(got));
    }
    if (bytes.size() > static_cast<std::uint64_t>(maximumBytes)) {
        return unexpected(SafeFileReaderError::tooLarge);
    }
    return bytes;
}

} // namespace gaugewell
