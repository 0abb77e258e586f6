#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace gaugewell {

// An exact base-10 number: a coefficient of at most 38 digits times a power of ten.
// Fractions of an allowance are computed here and become floating point only for display.
class Decimal {
public:
    static constexpr int maximumDigits = 38;
    static constexpr int minimumExponent = -128;
    static constexpr int maximumExponent = 127;

    constexpr Decimal() = default;
    Decimal(std::int64_t integer);

    // Strict JSON number grammar. Absent for malformed text, and for values that do not fit
    // exactly (more than 38 significant digits, or an exponent out of range).
    static std::optional<Decimal> parse(std::string_view literal);
    // The shortest decimal that reads back as `value`: 0.285 for the double nearest 0.285. Absent for
    // infinities and NaN.
    static std::optional<Decimal> shortest(double value);

    // Exact: only the exponent moves.
    Decimal dividedBy100() const;
    Decimal multipliedBy100() const;
    enum class Halves { awayFromZero, down };
    // The nearest whole number; absent beyond 64 bits.
    std::optional<std::int64_t> roundedInteger(Halves halves = Halves::awayFromZero) const;

    bool isZero() const { return coefficient == 0; }
    bool isNegative() const { return coefficient < 0; }
    bool isIntegral() const { return exponent >= 0; }
    // The value when it is whole and fits in 64 bits.
    std::optional<std::int64_t> int64Value() const;
    // Nearest double (correctly rounded).
    double toDouble() const;
    // Plain positional notation, no exponent: "0.415", "-12", "100".
    std::string text() const;

    std::strong_ordering operator<=>(const Decimal& other) const;
    bool operator==(const Decimal& other) const { return (*this <=> other) == 0; }

    std::size_t hashValue() const;

private:
    constexpr Decimal(__int128 coefficient, int exponent)
        : coefficient(coefficient)
        , exponent(exponent) {}
    static Decimal normalized(__int128 coefficient, int exponent);

    // Kept normalised: no trailing zeros in the coefficient, zero has exponent 0.
    __int128 coefficient = 0;
    int exponent = 0;
};

} // namespace gaugewell

template <> struct std::hash<gaugewell::Decimal> {
    std::size_t operator()(const gaugewell::Decimal& value) const noexcept { return value.hashValue(); }
};
