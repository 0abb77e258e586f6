#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <string_view>
#include <type_traits>

namespace gaugewell {

// Specialised for each closed enumeration: `names` lists the raw text of every case in case order.
template <class E> struct RawValues;

template <class E>
concept RawRepresentable = std::is_enum_v<E> && requires {
    RawValues<E>::names;
};

template <RawRepresentable E> constexpr std::string_view rawValue(E value) {
    return RawValues<E>::names[static_cast<std::size_t>(value)];
}

// Exact, case-sensitive match; anything else is absent.
template <RawRepresentable E> constexpr std::optional<E> fromRawValue(std::string_view text) {
    const auto& names = RawValues<E>::names;
    for (std::size_t index = 0; index < names.size(); ++index) {
        if (names[index] == text) {
            return static_cast<E>(index);
        }
    }
    return std::nullopt;
}

template <RawRepresentable E> constexpr auto allCases() {
    std::array<E, RawValues<E>::names.size()> cases{};
    for (std::size_t index = 0; index < cases.size(); ++index) {
        cases[index] = static_cast<E>(index);
    }
    return cases;
}

} // namespace gaugewell

// Enumerations hash by their raw text.
template <gaugewell::RawRepresentable E> struct std::hash<E> {
    std::size_t operator()(E value) const noexcept {
        return std::hash<std::string_view>{}(gaugewell::rawValue(value));
    }
};
