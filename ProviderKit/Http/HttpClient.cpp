#include "ProviderKit/Http/HttpClient.h"

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

} // namespace gaugewell
