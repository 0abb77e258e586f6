#include "CodexText.h"

#include <cstdint>

namespace gaugewell {

namespace {

constexpr std::string_view replacementCharacter = "\xEF\xBF\xBD";

// Length of the well-formed UTF-8 sequence at `index`, or 0 when it is not one (Unicode table 3-7).
std::size_t sequenceLength(std::string_view bytes, std::size_t index) {
    const auto byte = [&](std::size_t offset) -> unsigned {
        return index + offset < bytes.size() ? static_cast<unsigned char>(bytes[index + offset]) : 0x100;
    };
    const auto inRange = [](unsigned value, unsigned low, unsigned high) {
        return value >= low && value <= high;
    };
    const unsigned lead = byte(0);
    if (lead < 0x80) {
        return 1;
    }
    if (inRange(lead, 0xC2, 0xDF)) {
        return inRange(byte(1), 0x80, 0xBF) ? 2 : 0;
    }
    if (inRange(lead, 0xE0, 0xEF)) {
        const unsigned low = lead == 0xE0 ? 0xA0 : 0x80;
        const unsigned high = lead == 0xED ? 0x9F : 0xBF;
        return inRange(byte(1), low, high) && inRange(byte(2), 0x80, 0xBF) ? 3 : 0;
    }
    if (inRange(lead, 0xF0, 0xF4)) {
        const unsigned low = lead == 0xF0 ? 0x90 : 0x80;
        const unsigned high = lead == 0xF4 ? 0x8F : 0xBF;
        return inRange(byte(1), low, high) && inRange(byte(2), 0x80, 0xBF) && inRange(byte(3), 0x80, 0xBF)
                   ? 4
                   : 0;
    }
    return 0;
}

// Length of the maximal subpart of an ill-formed sequence: it becomes one replacement character,
// as Unicode recommends.
std::size_t invalidPrefixLength(std::string_view bytes, std::size_t index) {
    const unsigned lead = static_cast<unsigned char>(bytes[index]);
    std::size_t expected = 1;
    unsigned low = 0x80;
    unsigned high = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        expected = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        expected = 3;
        low = lead == 0xE0 ? 0xA0 : 0x80;
        high = lead == 0xED ? 0x9F : 0xBF;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        expected = 4;
        low = lead == 0xF0 ? 0x90 : 0x80;
        high = lead == 0xF4 ? 0x8F : 0xBF;
    }
    std::size_t length = 1;
    while (length < expected && index + length < bytes.size()) {
        const unsigned next = static_cast<unsigned char>(bytes[index + length]);
        if (next < low || next > high) {
            break;
        }
        low = 0x80;
        high = 0xBF;
        ++length;
    }
    return length;
}

bool isWhiteSpace(std::uint32_t scalar) {
    return (scalar >= 0x09 && scalar <= 0x0D) || scalar == 0x20 || scalar == 0x85 || scalar == 0xA0 ||
           scalar == 0x1680 || (scalar >= 0x2000 && scalar <= 0x200A) || scalar == 0x2028 ||
           scalar == 0x2029 || scalar == 0x202F || scalar == 0x205F || scalar == 0x3000;
}

std::uint32_t decodeScalar(std::string_view sequence) {
    const auto byte = [&](std::size_t i) {
        return static_cast<std::uint32_t>(static_cast<unsigned char>(sequence[i]));
    };
    switch (sequence.size()) {
    case 1:
        return byte(0);
    case 2:
        return ((byte(0) & 0x1F) << 6) | (byte(1) & 0x3F);
    case 3:
        return ((byte(0) & 0x0F) << 12) | ((byte(1) & 0x3F) << 6) | (byte(2) & 0x3F);
    default:
        return ((byte(0) & 0x07) << 18) | ((byte(1) & 0x3F) << 12) | ((byte(2) & 0x3F) << 6) |
               (byte(3) & 0x3F);
    }
}

} // namespace

std::string utf8WithReplacement(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    std::size_t index = 0;
    while (index < bytes.size()) {
        const std::size_t length = sequenceLength(bytes, index);
        if (length > 0) {
            text.append(bytes.substr(index, length));
            index += length;
        } else {
            text.append(replacementCharacter);
            index += invalidPrefixLength(bytes, index);
        }
    }
    return text;
}

std::string_view trimmedWhitespaceAndNewlines(std::string_view text) {
    std::size_t begin = 0;
    while (begin < text.size()) {
        const std::size_t length = sequenceLength(text, begin);
        if (length == 0 || !isWhiteSpace(decodeScalar(text.substr(begin, length)))) {
            break;
        }
        begin += length;
    }
    std::size_t end = text.size();
    while (end > begin) {
        // Step back to the start of the last code point.
        std::size_t start = end - 1;
        while (start > begin && (static_cast<unsigned char>(text[start]) & 0xC0) == 0x80 && end - start < 4) {
            --start;
        }
        const std::size_t length = sequenceLength(text, start);
        if (length != end - start || !isWhiteSpace(decodeScalar(text.substr(start, length)))) {
            break;
        }
        end = start;
    }
    return text.substr(begin, end - begin);
}

} // namespace gaugewell
