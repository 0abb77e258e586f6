#include "ProviderKit/Http/HttpUrl.h"

#include "ProviderKit/Http/CurlGlobal.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cctype>
#include <curl/curl.h>
#include <memory>
#include <netinet/in.h>

namespace gaugewell {

namespace {

struct CurlUrlDeleter {
    void operator()(CURLU* handle) const { curl_url_cleanup(handle); }
};

struct CurlStringDeleter {
    void operator()(char* text) const { curl_free(text); }
};

std::optional<std::string> part(CURLU* handle, CURLUPart which) {
    char* raw = nullptr;
    if (curl_url_get(handle, which, &raw, 0) != CURLUE_OK || raw == nullptr) {
        return std::nullopt;
    }
    std::unique_ptr<char, CurlStringDeleter> owned(raw);
    return std::string(raw);
}

bool equalsIgnoringCase(std::string_view left, std::string_view right) {
    return left.size() == right.size() &&
           std::equal(left.begin(), left.end(), right.begin(), [](char a, char b) {
               return std::tolower(static_cast<unsigned char>(a)) ==
                      std::tolower(static_cast<unsigned char>(b));
           });
}

} // namespace

bool isLoopbackHost(std::string_view host) {
    if (equalsIgnoringCase(host, "localhost")) {
        return true;
    }
    if (host.size() > 2 && host.front() == '[' && host.back() == ']') {
        const std::string inner(host.substr(1, host.size() - 2));
        in6_addr address{};
        return inet_pton(AF_INET6, inner.c_str(), &address) == 1 && IN6_IS_ADDR_LOOPBACK(&address);
    }
    const std::string text(host);
    in_addr address{};
    // inet_pton accepts only the four-part decimal form, so "127.1" or "0x7f.1" are not loopback here.
    return inet_pton(AF_INET, text.c_str(), &address) == 1 && (ntohl(address.s_addr) >> 24) == 127;
}

bool HttpUrl::isLoopback() const {
    return isLoopbackHost(host);
}

std::optional<HttpUrl> parseHttpUrl(std::string_view text) {
    ensureCurlGlobalInit();
    if (text.find('\0') != std::string_view::npos) {
        return std::nullopt;
    }
    std::unique_ptr<CURLU, CurlUrlDeleter> handle(curl_url());
    if (!handle) {
        return std::nullopt;
    }
    const std::string input(text);
    if (curl_url_set(handle.get(), CURLUPART_URL, input.c_str(), 0) != CURLUE_OK) {
        return std::nullopt;
    }
    HttpUrl url;
    auto scheme = part(handle.get(), CURLUPART_SCHEME);
    auto host = part(handle.get(), CURLUPART_HOST);
    if (!scheme || !host || host->empty()) {
        return std::nullopt;
    }
    std::transform(scheme->begin(), scheme->end(), scheme->begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (*scheme != "http" && *scheme != "https") {
        return std::nullopt;
    }
    url.scheme = std::move(*scheme);
    url.host = std::move(*host);
    url.path = part(handle.get(), CURLUPART_PATH).value_or("/");
    url.hasUserInfo =
        part(handle.get(), CURLUPART_USER).has_value() || part(handle.get(), CURLUPART_PASSWORD).has_value();
    url.hasQuery = part(handle.get(), CURLUPART_QUERY).has_value();
    url.hasFragment = part(handle.get(), CURLUPART_FRAGMENT).has_value();
    return url;
}

} // namespace gaugewell
