#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace gaugewell {

// PKCE with the S256 method (RFC 7636) and the random strings of the sign-in.
class Pkce {
public:
    static constexpr std::size_t verifierByteCount = 48; // 64 characters
    static constexpr std::size_t stateByteCount = 24;    // 32 characters

    // URL-safe Base64 without padding: "+" -> "-", "/" -> "_", no "=".
    static std::string base64URLEncoded(std::span<const std::byte> bytes);
    // `byteCount` bytes from the system's secure random source, URL-safe encoded; absent when
    // the random source fails.
    static std::optional<std::string> randomURLSafeString(std::size_t byteCount);
    // SHA-256 of the verifier's UTF-8 bytes, URL-safe encoded (43 characters).
    static std::string challenge(std::string_view verifier);
};

} // namespace gaugewell
