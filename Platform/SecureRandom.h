#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace gaugewell {

// Bytes from the kernel's random source (getrandom), for PKCE verifiers, states and identifiers.
class SecureRandom {
public:
    // Fills the whole buffer; false only if the kernel refuses (never partially filled on success).
    static bool fill(std::span<std::byte> buffer);
    static std::vector<std::byte> bytes(std::size_t count);
};

} // namespace gaugewell
