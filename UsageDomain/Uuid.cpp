#include "Uuid.h"

#include <cerrno>
#include <cstdlib>
#include <sys/random.h>

namespace gaugewell {

namespace {

constexpr bool isHyphenPosition(std::size_t index) {
    return index == 8 || index == 13 || index == 18 || index == 23;
}

int hexValue(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

} // namespace

std::optional<Uuid> Uuid::parse(std::string_view text) {
    if (text.size() != 36) {
        return std::nullopt;
    }
    Bytes bytes{};
    std::size_t byteIndex = 0;
    for (std::size_t index = 0; index < text.size();) {
        if (isHyphenPosition(index)) {
            if (text[index] != '-') {
                return std::nullopt;
            }
            ++index;
            continue;
        }
        const int high = hexValue(text[index]);
        const int low = hexValue(text[index + 1]);
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        bytes[byteIndex++] = static_cast<std::uint8_t>(high * 16 + low);
        index += 2;
    }
    return Uuid(bytes);
}

Uuid Uuid::random() {
    Bytes bytes{};
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        const ssize_t count = getrandom(bytes.data() + filled, bytes.size() - filled, 0);
        if (count < 0) {
            if (errno == EINTR) {
                continue;
            }
            std::abort(); // the kernel's random source is not optional
        }
        filled += static_cast<std::size_t>(count);
    }
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0f) | 0x40);
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3f) | 0x80);
    return Uuid(bytes);
}

std::string Uuid::text() const {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string result;
    result.reserve(36);
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        if (index == 4 || index == 6 || index == 8 || index == 10) {
            result.push_back('-');
        }
        result.push_back(digits[bytes[index] >> 4]);
        result.push_back(digits[bytes[index] & 0x0f]);
    }
    return result;
}

} // namespace gaugewell
