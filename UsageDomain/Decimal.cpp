#include "Decimal.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace gaugewell {

namespace {

using Int128 = __int128;

constexpr Int128 powerOfTen(int n) {
    Int128 result = 1;
    for (int i = 0; i < n; ++i) {
        result *= 10;
    }
    return result;
}

Int128 magnitude(Int128 value) {
    return value < 0 ? -value : value;
}

int digitCount(Int128 value) {
    int count = 1;
    for (value = magnitude(value); value >= 10; value /= 10) {
        ++count;
    }
    return count;
}

std::string digitsOf(Int128 value) {
    std::string digits;
    value = magnitude(value);
    do {
        digits.push_back(static_cast<char>('0' + static_cast<int>(value % 10)));
        value /= 10;
    } while (value != 0);
    std::reverse(digits.begin(), digits.end());
    return digits;
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

} // namespace

Decimal::Decimal(std::int64_t integer) {
    *this = normalized(integer, 0);
}

Decimal Decimal::normalized(Int128 coefficient, int exponent) {
    if (coefficient == 0) {
        return Decimal(0, 0);
    }
    while (coefficient % 10 == 0) {
        coefficient /= 10;
        ++exponent;
    }
    return Decimal(coefficient, exponent);
}

std::optional<Decimal> Decimal::parse(std::string_view literal) {
    std::size_t position = 0;
    const auto at = [&](std::size_t i) { return i < literal.size() ? literal[i] : '\0'; };

    const bool negative = at(position) == '-';
    if (negative) {
        ++position;
    }
    if (!isDigit(at(position))) {
        return std::nullopt;
    }
    if (at(position) == '0' && isDigit(at(position + 1))) {
        return std::nullopt; // leading zeros are not JSON
    }

    Int128 coefficient = 0;
    int significantDigits = 0;
    long long exponent = 0;
    bool droppedNonZero = false;
    const auto takeDigit = [&](char c, bool fractional) {
        const int digit = c - '0';
        if (significantDigits == 0 && digit == 0) {
            if (fractional) {
                --exponent;
            }
            return;
        }
        if (significantDigits < maximumDigits) {
            coefficient = coefficient * 10 + digit;
            ++significantDigits;
            if (fractional) {
                --exponent;
            }
        } else if (!fractional) {
            ++exponent; // an integer digit beyond the coefficient: exact only if it is zero
            droppedNonZero = droppedNonZero || digit != 0;
        } else {
            droppedNonZero = droppedNonZero || digit != 0;
        }
    };

    while (isDigit(at(position))) {
        takeDigit(literal[position++], false);
    }
    if (at(position) == '.') {
        ++position;
        if (!isDigit(at(position))) {
            return std::nullopt;
        }
        while (isDigit(at(position))) {
            takeDigit(literal[position++], true);
        }
    }
    if (at(position) == 'e' || at(position) == 'E') {
        ++position;
        bool negativeExponent = false;
        if (at(position) == '+' || at(position) == '-') {
            negativeExponent = at(position) == '-';
            ++position;
        }
        if (!isDigit(at(position))) {
            return std::nullopt;
        }
        long long written = 0;
        while (isDigit(at(position))) {
            // Saturate: anything this large is out of range anyway.
            written = std::min<long long>(written * 10 + (literal[position++] - '0'), 1'000'000'000LL);
        }
        exponent += negativeExponent ? -written : written;
    }
    if (position != literal.size() || droppedNonZero) {
        return std::nullopt;
    }
    if (coefficient == 0) {
        return Decimal();
    }
    while (coefficient % 10 == 0) {
        coefficient /= 10;
        ++exponent;
    }
    if (exponent < minimumExponent || exponent > maximumExponent) {
        return std::nullopt;
    }
    return Decimal(negative ? -coefficient : coefficient, static_cast<int>(exponent));
}

Decimal Decimal::dividedBy100() const {
    if (coefficient == 0) {
        return *this;
    }
    return Decimal(coefficient, exponent - 2);
}

Decimal Decimal::multipliedBy100() const {
    if (coefficient == 0) {
        return *this;
    }
    return Decimal(coefficient, exponent + 2);
}

std::optional<std::int64_t> Decimal::roundedInteger(Halves halves) const {
    if (exponent >= 0) {
        return int64Value();
    }
    // Below 10^38 in magnitude, so with more than 38 fraction digits the value is under 0.1.
    if (-exponent > maximumDigits) {
        return 0;
    }
    const Int128 divisor = powerOfTen(-exponent);
    Int128 whole = magnitude(coefficient) / divisor;
    const Int128 rest = magnitude(coefficient) % divisor;
    const bool halfGoesUp = halves == Halves::awayFromZero || coefficient < 0;
    if (rest > divisor - rest || (halfGoesUp && rest == divisor - rest)) {
        ++whole;
    }
    if (whole > std::numeric_limits<std::int64_t>::max()) {
        return std::nullopt;
    }
    return static_cast<std::int64_t>(coefficient < 0 ? -whole : whole);
}

std::optional<Decimal> Decimal::shortest(double value) {
    char buffer[64];
    const auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, value);
    if (error != std::errc() || !std::isfinite(value)) {
        return std::nullopt;
    }
    return parse(std::string_view(buffer, static_cast<std::size_t>(end - buffer)));
}

std::optional<std::int64_t> Decimal::int64Value() const {
    // A non-zero coefficient times 10^19 is already beyond 64 bits.
    if (exponent < 0 || exponent > 18) {
        return std::nullopt;
    }
    const Int128 value = coefficient * powerOfTen(exponent);
    if (value > std::numeric_limits<std::int64_t>::max() ||
        value < std::numeric_limits<std::int64_t>::min()) {
        return std::nullopt;
    }
    return static_cast<std::int64_t>(value);
}

double Decimal::toDouble() const {
    std::string scientific =
        (coefficient < 0 ? "-" : "") + digitsOf(coefficient) + "e" + std::to_string(exponent);
    double result = 0;
    std::from_chars(scientific.data(), scientific.data() + scientific.size(), result);
    return result;
}

std::string Decimal::text() const {
    std::string digits = digitsOf(coefficient);
    std::string result = coefficient < 0 ? "-" : "";
    if (exponent >= 0) {
        return result + digits + std::string(static_cast<std::size_t>(exponent), '0');
    }
    const auto fractionDigits = static_cast<std::size_t>(-exponent);
    if (digits.size() <= fractionDigits) {
        return result + "0." + std::string(fractionDigits - digits.size(), '0') + digits;
    }
    const auto split = digits.size() - fractionDigits;
    return result + digits.substr(0, split) + "." + digits.substr(split);
}

std::strong_ordering Decimal::operator<=>(const Decimal& other) const {
    const int sign = (coefficient > 0) - (coefficient < 0);
    const int otherSign = (other.coefficient > 0) - (other.coefficient < 0);
    if (sign != otherSign || sign == 0) {
        return sign <=> otherSign;
    }
    // Same sign, both non-zero: compare magnitudes by order of magnitude, then by aligned digits.
    const int length = digitCount(coefficient);
    const int otherLength = digitCount(other.coefficient);
    std::strong_ordering byMagnitude = std::strong_ordering::equal;
    if (length + exponent != otherLength + other.exponent) {
        byMagnitude = (length + exponent) <=> (otherLength + other.exponent);
    } else {
        // Both fit in 38 digits once padded to the same length.
        Int128 left = magnitude(coefficient) * powerOfTen(std::max(0, otherLength - length));
        Int128 right = magnitude(other.coefficient) * powerOfTen(std::max(0, length - otherLength));
        byMagnitude = left <=> right;
    }
    return sign > 0 ? byMagnitude : 0 <=> byMagnitude;
}

std::size_t Decimal::hashValue() const {
    const auto high = static_cast<std::uint64_t>(static_cast<unsigned __int128>(coefficient) >> 64);
    const auto low = static_cast<std::uint64_t>(coefficient);
    std::size_t h = std::hash<std::uint64_t>{}(low);
    h ^= std::hash<std::uint64_t>{}(high) + 0x9e3779b97f4a7c15ULL + (h << 6) + (h >> 2);
    h ^= std::hash<int>{}(exponent) + 0x9e3779b97f4a7c15ULL + (h << 6) + (h >> 2);
    return h;
}

} // namespace gaugewell
