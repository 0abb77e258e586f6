#pragma once

#include <unistd.h>
#include <utility>

namespace gaugewell {

// Owns one open file descriptor and closes it when destroyed; move-only. -1 holds nothing.
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor)
        : descriptor(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept
        : descriptor(other.release()) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        if (this != &other) {
            reset(other.release());
        }
        return *this;
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() { reset(); }

    int get() const { return descriptor; }
    bool isOpen() const { return descriptor >= 0; }
    explicit operator bool() const { return isOpen(); }

    int release() { return std::exchange(descriptor, -1); }
    void reset(int replacement = -1) {
        if (descriptor >= 0) {
            ::close(descriptor);
        }
        descriptor = replacement;
    }

private:
    int descriptor = -1;
};

} // namespace gaugewell
