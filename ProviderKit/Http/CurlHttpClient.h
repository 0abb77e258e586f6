#pragma once

#include "ProviderKit/Http/HttpClient.h"

namespace gaugewell {

// HttpClient over libcurl: one easy handle per request, TLS verification on, no cookie engine,
// no redirects, no signals (safe on worker threads), the request's time-out over the whole exchange
// and its byte cap on the body. Plain http is refused unless the host is the loopback interface, and
// loopback requests never go through a proxy from the environment.
class CurlHttpClient final : public HttpClient {
public:
    CurlHttpClient();
    Expected<HttpResponse, HttpClientError> send(const HttpRequest& request) override;
};

} // namespace gaugewell
