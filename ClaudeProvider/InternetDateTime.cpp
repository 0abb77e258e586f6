#include "InternetDateTime.h"

#include <cstdint>

namespace gaugewell {

namespace {

class Reader {
public:
    explicit Reader(std::string_view text)
        : text(text) {}

    // Exactly `count` digits.
    std::optional<int> digits(std::size_t count) {
        if (position + count > text.size()) {
            return std::nullopt;
        }
        int value = 0;
        for (std::size_t index = 0; index < count; ++index) {
            const char c = text[position + index];
            if (c < '0' || c > '9') {
                return std::nullopt;
            }
            value = value * 10 + (c - '0');
        }
        position += count;
        return value;
    }

    bool accept(char expected) {
        if (position < text.size() && text[position] == expected) {
            ++position;
            return true;
        }
        return false;
    }

    std::optional<char> next() {
        if (position >= text.size()) {
            return std::nullopt;
        }
        return text[position++];
    }

    bool atEnd() const { return position == text.size(); }
    bool peekDigit() const {
        return position < text.size() && text[position] >= '0' && text[position] <= '9';
    }

private:
    std::string_view text;
    std::size_t position = 0;
};

bool isLeapYear(int year) {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int daysInMonth(int year, int month) {
    static constexpr int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && isLeapYear(year) ? 29 : days[month - 1];
}

// Days from 1970-01-01 to the given proleptic Gregorian date (H. Hinnant's algorithm).
std::int64_t daysFromCivil(int year, int month, int day) {
    year -= month <= 2 ? 1 : 0;
    const std::int64_t era = (year >= 0 ? year : year - 399) / 400;
    const auto yearOfEra = static_cast<unsigned>(year - era * 400);
    const unsigned dayOfYear =
        (153 * static_cast<unsigned>(month + (month > 2 ? -3 : 9)) + 2) / 5 + static_cast<unsigned>(day) - 1;
    const unsigned dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + static_cast<std::int64_t>(dayOfEra) - 719468;
}

} // namespace

std::optional<Date> parseInternetDateTime(std::string_view text) {
    Reader reader(text);
    const auto year = reader.digits(4);
    if (!year || !reader.accept('-')) {
        return std::nullopt;
    }
    const auto month = reader.digits(2);
    if (!month || *month < 1 || *month > 12 || !reader.accept('-')) {
        return std::nullopt;
    }
    const auto day = reader.digits(2);
    if (!day || *day < 1 || *day > daysInMonth(*year, *month)) {
        return std::nullopt;
    }
    if (!reader.accept('T') && !reader.accept('t')) {
        return std::nullopt;
    }
    const auto hour = reader.digits(2);
    if (!hour || *hour > 23 || !reader.accept(':')) {
        return std::nullopt;
    }
    const auto minute = reader.digits(2);
    if (!minute || *minute > 59 || !reader.accept(':')) {
        return std::nullopt;
    }
    const auto second = reader.digits(2);
    if (!second || *second > 59) {
        return std::nullopt;
    }
    std::int64_t nanoseconds = 0;
    if (reader.accept('.')) {
        if (!reader.peekDigit()) {
            return std::nullopt;
        }
        std::int64_t scale = 100'000'000;
        while (reader.peekDigit()) {
            const int digit = *reader.digits(1);
            nanoseconds += digit * scale; // digits past the ninth add nothing
            scale /= 10;
        }
    }
    int offsetSeconds = 0;
    const auto zone = reader.next();
    if (zone == 'Z' || zone == 'z') {
        offsetSeconds = 0;
    } else if (zone == '+' || zone == '-') {
        const auto offsetHours = reader.digits(2);
        if (!offsetHours || *offsetHours > 23 || !reader.accept(':')) {
            return std::nullopt;
        }
        const auto offsetMinutes = reader.digits(2);
        if (!offsetMinutes || *offsetMinutes > 59) {
            return std::nullopt;
        }
        offsetSeconds = (*offsetHours * 3600 + *offsetMinutes * 60) * (zone == '-' ? -1 : 1);
    } else {
        return std::nullopt;
    }
    if (!reader.atEnd()) {
        return std::nullopt;
    }
    const std::int64_t unixSeconds =
        daysFromCivil(*year, *month, *day) * 86400 + *hour * 3600 + *minute * 60 + *second - offsetSeconds;
    // Dates count nanoseconds in 64 bits: about the years 1678 to 2261.
    constexpr std::int64_t representableSeconds = 9'000'000'000;
    if (unixSeconds > representableSeconds || unixSeconds < -representableSeconds) {
        return std::nullopt;
    }
    return Date(std::chrono::duration_cast<Date::duration>(std::chrono::seconds(unixSeconds) +
                                                           std::chrono::nanoseconds(nanoseconds)));
}

} // namespace gaugewell
