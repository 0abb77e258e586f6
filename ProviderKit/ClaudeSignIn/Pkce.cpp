#include "ProviderKit/ClaudeSignIn/Pkce.h"

#include "Platform/SecureRandom.h"
#include "Platform/SecureWipe.h"
#include "Platform/Sha256.h"

#include <algorithm>
#include <vector>

namespace gaugewell {

std::string Pkce::base64URLEncoded(std::span<const std::byte> bytes) {
    static constexpr std::string_view alphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
    std::string result;
    result.reserve((bytes.size() * 4 + 2) / 3);
    std::size_t index = 0;
    for (; index + 3 <= bytes.size(); index += 3) {
        const auto group = (std::to_integer<unsigned>(bytes[index]) << 16) |
                           (std::to_integer<unsigned>(bytes[index + 1]) << 8) |
                           std::to_integer<unsigned>(bytes[index + 2]);
        result.push_back(alphabet[(group >> 18) & 63]);
        result.push_back(alphabet[(group >> 12) & 63]);
        result.push_back(alphabet[(group >> 6) & 63]);
        result.push_back(alphabet[group & 63]);
    }
    const std::size_t left = bytes.size() - index;
    if (left > 0) {
        unsigned group = std::to_integer<unsigned>(bytes[index]) << 16;
        if (left == 2) {
            group |= std::to_integer<unsigned>(bytes[index + 1]) << 8;
        }
        result.push_back(alphabet[(group >> 18) & 63]);
        result.push_back(alphabet[(group >> 12) & 63]);
        if (left == 2) {
            result.push_back(alphabet[(group >> 6) & 63]);
        }
    }
    return result;
}

std::optional<std::string> Pkce::randomURLSafeString(std::size_t byteCount) {
    std::vector<std::byte> bytes(byteCount);
    if (!SecureRandom::fill(bytes)) {
        return std::nullopt;
    }
    auto text = base64URLEncoded(bytes);
    secureWipe(bytes);
    return text;
}

std::string Pkce::challenge(std::string_view verifier) {
    const auto digest = Sha256::digest(verifier);
    return base64URLEncoded(digest);
}

} // namespace gaugewell
