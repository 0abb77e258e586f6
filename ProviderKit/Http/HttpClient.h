#pragma once

#include "UsageDomain/Date.h"
#include "UsageDomain/Expected.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace gaugewell {

struct HttpRequest {
    std::string method = "GET";
    std::string url;
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body; // sent when non-empty or when the method is POST
    std::chrono::milliseconds timeout{10'000};
    std::size_t maximumResponseBytes = 1 << 20;
};

struct HttpResponse {
    long status = 0;
    std::string body;
    // The Retry-After header as sent, when there was one (rate limits, maintenance).
    std::optional<std::string> retryAfter;
};

// When a Retry-After value (delta seconds, or an HTTP date) received at `now` lets the client try again;
// absent when the value is neither. Never more than a day ahead, so a wrong date cannot silence a service.
std::optional<Date> retryAfterDate(std::string_view value, Date now);

enum class HttpClientError {
    invalidURL,       // not an absolute http(s) URL
    insecureURL,      // plain http to a host that is not the loopback interface
    invalidRequest,   // a method or header that cannot be sent as given (line breaks, empty name)
    timedOut,         // the whole exchange did not finish within the request's time-out
    transportFailed,  // connection refused, reset, TLS failure, name resolution, ...
    invalidResponse,  // the peer answered with something that is not HTTP
    responseTooLarge, // the body exceeded the request's maximum
};

std::string_view describe(HttpClientError error);

// One blocking HTTP exchange per call; callable from any thread. No cookies, no cache, no redirects
// followed. Errors carry no text: neither the URL (which may hold a code) nor the peer's answer.
class HttpClient {
public:
    virtual ~HttpClient() = default;
    virtual Expected<HttpResponse, HttpClientError> send(const HttpRequest& request) = 0;
};

} // namespace gaugewell
