#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace gaugewell {

// The parts of an absolute http or https URL that decide where a request goes.
struct HttpUrl {
    std::string scheme; // "http" or "https", lower case
    std::string host;   // as libcurl will use it; IPv6 literals keep their brackets
    std::string path;   // "/" at least
    bool hasUserInfo = false;
    bool hasQuery = false;
    bool hasFragment = false;

    bool isLoopback() const;
    // https anywhere, plain http only to the loopback interface.
    bool isSecureOrLoopback() const { return scheme == "https" || isLoopback(); }
};

// Absent for anything that is not an absolute http(s) URL with a host.
std::optional<HttpUrl> parseHttpUrl(std::string_view text);

// 127.0.0.0/8 in dotted-quad form, "localhost" (any letter case) and "[::1]".
bool isLoopbackHost(std::string_view host);

} // namespace gaugewell
