#include "ProviderKit/Http/HttpClient.h"

#include <algorithm>
#include <ctime>
#include <iomanip>
#include <locale>
#include <sstream>

namespace gaugewell {

std::string_view describe(HttpClientError error) {
    switch (error) {
    case HttpClientError::invalidURL:
        return "The address is not an absolute http or https URL.";
    case HttpClientError::insecureURL:
        return "Plain http is only allowed to this computer's loopback interface.";
    case HttpClientError::invalidRequest:
        return "The request cannot be sent as given.";
    case HttpClientError::timedOut:
        return "The server did not answer in time.";
    case HttpClientError::transportFailed:
        return "The server could not be reached.";
    case HttpClientError::invalidResponse:
        return "The server's answer was not HTTP.";
    case HttpClientError::responseTooLarge:
        break;
    }
    return "The server's answer was too large.";
}

std::optional<Date> retryAfterDate(std::string_view value, Date now) {
    constexpr double longestWait = 24 * 60 * 60;
    while (!value.empty() && (value.front() == ' ' || value.front() == '\t')) {
        value.remove_prefix(1);
    }
    while (!value.empty() && (value.back() == ' ' || value.back() == '\t')) {
        value.remove_suffix(1);
    }
    if (!value.empty() &&
        std::all_of(value.begin(), value.end(), [](char c) { return c >= '0' && c <= '9'; })) {
        const auto seconds =
            value.size() > 9 ? longestWait : std::min<double>(std::stod(std::string(value)), longestWait);
        return addingSeconds(now, seconds);
    }
    // The HTTP date form: "Wed, 21 Oct 2015 07:28:00 GMT".
    std::tm parts{};
    std::istringstream stream{std::string(value)};
    stream.imbue(std::locale::classic());
    stream >> std::get_time(&parts, "%a, %d %b %Y %H:%M:%S GMT");
    if (stream.fail() || stream.peek() != std::char_traits<char>::eof()) {
        return std::nullopt;
    }
    const Date date = std::chrono::system_clock::from_time_t(::timegm(&parts));
    return std::clamp(date, now, addingSeconds(now, longestWait));
}

} // namespace gaugewell
