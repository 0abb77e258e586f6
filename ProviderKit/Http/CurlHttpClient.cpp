#include "ProviderKit/Http/CurlHttpClient.h"

#include "Platform/Deadline.h"
#include "ProviderKit/Http/CurlGlobal.h"
#include "ProviderKit/Http/HttpUrl.h"

#include <cstdlib>
#include <curl/curl.h>
#include <memory>
#include <mutex>

namespace gaugewell {

void ensureCurlGlobalInit() {
    static std::once_flag once;
    std::call_once(once, [] {
        if (curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) {
            std::abort(); // without it no request can be made safely
        }
    });
}

namespace {

struct EasyDeleter {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};

class HeaderList {
public:
    HeaderList() = default;
    HeaderList(const HeaderList&) = delete;
    HeaderList& operator=(const HeaderList&) = delete;
    ~HeaderList() { curl_slist_free_all(list); }

    bool append(const std::string& line) {
        curl_slist* extended = curl_slist_append(list, line.c_str());
        if (extended == nullptr) {
            return false;
        }
        list = extended;
        return true;
    }
    curl_slist* get() const { return list; }

private:
    curl_slist* list = nullptr;
};

struct BodySink {
    std::string body;
    std::size_t maximum = 0;
    bool overflowed = false;
};

std::size_t appendBody(char* data, std::size_t size, std::size_t count, void* context) {
    auto* sink = static_cast<BodySink*>(context);
    const std::size_t length = size * count;
    if (length > sink->maximum - sink->body.size()) {
        sink->overflowed = true;
        return 0; // makes curl stop with CURLE_WRITE_ERROR
    }
    sink->body.append(data, length);
    return length;
}

// Header lines may not carry line breaks or NULs; such a header would split the request.
bool isSafeHeaderText(std::string_view text) {
    return text.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos;
}

HttpClientError classify(CURLcode code) {
    switch (code) {
    case CURLE_OPERATION_TIMEDOUT:
        return HttpClientError::timedOut;
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_UNSUPPORTED_PROTOCOL: // includes an HTTP/0.9 answer, which curl refuses
    case CURLE_BAD_CONTENT_ENCODING:
        return HttpClientError::invalidResponse;
    default:
        return HttpClientError::transportFailed;
    }
}

} // namespace

CurlHttpClient::CurlHttpClient() {
    ensureCurlGlobalInit();
}

Expected<HttpResponse, HttpClientError> CurlHttpClient::send(const HttpRequest& request) {
    const auto url = parseHttpUrl(request.url);
    if (!url || url->hasUserInfo || url->hasFragment) {
        return unexpected(HttpClientError::invalidURL);
    }
    if (!url->isSecureOrLoopback()) {
        return unexpected(HttpClientError::insecureURL);
    }
    if (!isSafeHeaderText(request.method) || request.method.empty()) {
        return unexpected(HttpClientError::invalidRequest);
    }

    std::unique_ptr<CURL, EasyDeleter> easy(curl_easy_init());
    if (!easy) {
        return unexpected(HttpClientError::transportFailed);
    }
    CURL* handle = easy.get();

    HeaderList headers;
    for (const auto& [name, value] : request.headers) {
        if (name.empty() || !isSafeHeaderText(name) || !isSafeHeaderText(value) ||
            !headers.append(name + ": " + value)) {
            return unexpected(HttpClientError::invalidRequest);
        }
    }
    // No "100-continue" round trip for larger bodies.
    if (!headers.append("Expect:")) {
        return unexpected(HttpClientError::transportFailed);
    }

    BodySink sink;
    sink.maximum = request.maximumResponseBytes;
    // At least a millisecond: to curl, zero means no time-out at all.
    const long timeoutMilliseconds = std::max(1, Deadline::after(request.timeout).pollMilliseconds());

    bool configured = true;
    auto set = [&](CURLoption option, auto value) {
        configured = configured && curl_easy_setopt(handle, option, value) == CURLE_OK;
    };
    set(CURLOPT_URL, request.url.c_str());
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    set(CURLOPT_REDIR_PROTOCOLS_STR, "https");
    set(CURLOPT_FOLLOWLOCATION, 0L);
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_SSL_VERIFYPEER, 1L);
    set(CURLOPT_SSL_VERIFYHOST, 2L);
    set(CURLOPT_TIMEOUT_MS, timeoutMilliseconds);
    set(CURLOPT_CONNECTTIMEOUT_MS, timeoutMilliseconds);
    set(CURLOPT_HTTPHEADER, headers.get());
    set(CURLOPT_WRITEFUNCTION, &appendBody);
    set(CURLOPT_WRITEDATA, &sink);
    set(CURLOPT_NOPROGRESS, 1L);
    set(CURLOPT_VERBOSE, 0L);
    if (url->isLoopback()) {
        // A proxy from the environment (http_proxy, ALL_PROXY, ...) must never see loopback traffic: it is
        // plain http and carries the OAuth code and tokens of local sign-ins. Remote hosts are https only,
        // so a proxy there sees a CONNECT tunnel and nothing inside it; users who need one keep it.
        set(CURLOPT_PROXY, "");
    }
    if (request.method == "GET") {
        set(CURLOPT_HTTPGET, 1L);
    } else if (request.method == "HEAD") {
        set(CURLOPT_NOBODY, 1L);
    } else if (request.method != "POST") {
        set(CURLOPT_CUSTOMREQUEST, request.method.c_str());
    }
    if (!request.body.empty() || request.method == "POST") {
        set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
        set(CURLOPT_POSTFIELDS, request.body.c_str());
    }
    if (!configured) {
        return unexpected(HttpClientError::transportFailed);
    }

    const CURLcode result = curl_easy_perform(handle);
    if (sink.overflowed) {
        return unexpected(HttpClientError::responseTooLarge);
    }
    if (result != CURLE_OK) {
        return unexpected(classify(result));
    }
    long status = 0;
    if (curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &status) != CURLE_OK || status < 100) {
        return unexpected(HttpClientError::invalidResponse);
    }
    HttpResponse response{status, std::move(sink.body), std::nullopt};
    curl_header* retryAfter = nullptr;
    if (curl_easy_header(handle, "Retry-After", 0, CURLH_HEADER, -1, &retryAfter) == CURLHE_OK &&
        retryAfter != nullptr) {
        response.retryAfter = std::string(retryAfter->value);
    }
    return response;
}

} // namespace gaugewell
