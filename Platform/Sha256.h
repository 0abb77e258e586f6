#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

namespace gaugewell {

class Sha256 {
public:
    using Digest = std::array<std::byte, 32>;

    static Digest digest(std::span<const std::byte> data);
    static Digest digest(std::string_view text);
};

} // namespace gaugewell
