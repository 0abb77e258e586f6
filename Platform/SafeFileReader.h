#pragma once

#include "UsageDomain/Expected.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>

namespace gaugewell {

enum class SafeFileReaderError { missing, permissionDenied, tooLarge, unreadable };

// Reads a small local file whole, with a hard size limit. Failures are the four errors only,
// never the platform's error or any of the file's contents.
class SafeFileReader {
public:
    // Blocks. A read that fails as `unreadable` is tried once more after `retryDelay`; every
    // other outcome is final at once. Never reads more than `maximumBytes` + 1 bytes, so a file
    // that grows while we read it is still refused as too large.
    Expected<std::string, SafeFileReaderError> read(const std::filesystem::path& path,
                                                    std::int64_t maximumBytes,
                                                    std::chrono::nanoseconds retryDelay) const;

private:
    Expected<std::string, SafeFileReaderError> readOnce(const std::filesystem::path& path,
                                                        std::int64_t maximumBytes) const;
};

} // namespace gaugewell
