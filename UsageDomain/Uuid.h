#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace gaugewell {

class Uuid {
public:
    using Bytes = std::array<std::uint8_t, 16>;

    constexpr Uuid() = default;
    explicit constexpr Uuid(const Bytes& bytes)
        : bytes(bytes) {}

    // Accepts the 8-4-4-4-12 hexadecimal form in either letter case.
    static std::optional<Uuid> parse(std::string_view text);
    // A random version-4 UUID from the kernel's random source.
    static Uuid random();

    // Canonical form: upper-case hexadecimal with hyphens.
    std::string text() const;
    const Bytes& rawBytes() const { return bytes; }

    auto operator<=>(const Uuid&) const = default;

private:
    Bytes bytes{};
};

} // namespace gaugewell

template <> struct std::hash<gaugewell::Uuid> {
    std::size_t operator()(const gaugewell::Uuid& uuid) const noexcept {
        return std::hash<std::string_view>{}(
            std::string_view(reinterpret_cast<const char*>(uuid.rawBytes().data()), uuid.rawBytes().size()));
    }
};
