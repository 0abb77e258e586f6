#include "WidgetUsageLoader.h"

#include <cstdlib>
#include <curl/curl.h>
#include <memory>
#include <mutex>

namespace gaugewell {

namespace {

// Older libcurl versions do not make curl_global_init safe against concurrent callers.
void ensureCurlReady() {
    static std::once_flag once;
    std::call_once(once, [] {
        if (curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) {
            std::abort(); // without it no request can be made safely
        }
    });
}

struct EasyDeleter {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};

struct ListDeleter {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
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
        return 0; // curl stops with CURLE_WRITE_ERROR
    }
    sink->body.append(data, length);
    return length;
}

WidgetFetchError classify(CURLcode code) {
    switch (code) {
    case CURLE_COULDNT_CONNECT:
        return WidgetTransportError::cannotConnect;
    case CURLE_OPERATION_TIMEDOUT:
        return WidgetTransportError::timedOut;
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_UNSUPPORTED_PROTOCOL: // an HTTP/0.9 answer, which curl refuses
    case CURLE_BAD_CONTENT_ENCODING:
        return WidgetUsageLoaderError::invalidResponse;
    default:
        return WidgetTransportError::connectionFailed;
    }
}

} // namespace

WidgetFetchResult fetchWidgetUsageSnapshot(const WidgetFeedEndpoint& endpoint) {
    ensureCurlReady();
    const std::unique_ptr<CURL, EasyDeleter> easy(curl_easy_init());
    std::unique_ptr<curl_slist, ListDeleter> headers(curl_slist_append(nullptr, "Cache-Control: no-store"));
    if (!easy || !headers) {
        return WidgetFetchError(WidgetTransportError::connectionFailed);
    }
    CURL* handle = easy.get();
    const std::string url = endpoint.url();
    const long timeoutMilliseconds = std::max<long>(1, static_cast<long>(endpoint.timeout.count()));
    BodySink sink;
    sink.maximum = endpoint.maximumResponseBytes;

    bool configured = true;
    auto set = [&](CURLoption option, auto value) {
        configured = configured && curl_easy_setopt(handle, option, value) == CURLE_OK;
    };
    set(CURLOPT_URL, url.c_str());
    set(CURLOPT_PROTOCOLS_STR, "http");
    set(CURLOPT_HTTPGET, 1L);
    set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    set(CURLOPT_FOLLOWLOCATION, 0L);
    set(CURLOPT_PROXY, ""); // loopback traffic never goes through a proxy from the environment
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_TIMEOUT_MS, timeoutMilliseconds);
    set(CURLOPT_CONNECTTIMEOUT_MS, timeoutMilliseconds);
    set(CURLOPT_FRESH_CONNECT, 1L);
    set(CURLOPT_FORBID_REUSE, 1L);
    set(CURLOPT_HTTPHEADER, headers.get());
    set(CURLOPT_WRITEFUNCTION, &appendBody);
    set(CURLOPT_WRITEDATA, &sink);
    set(CURLOPT_NOPROGRESS, 1L);
    if (!configured) {
        return WidgetFetchError(WidgetTransportError::connectionFailed);
    }

    const CURLcode result = curl_easy_perform(handle);
    if (sink.overflowed) {
        return WidgetFetchError(WidgetUsageLoaderError::invalidResponse);
    }
    if (result != CURLE_OK) {
        return classify(result);
    }
    long status = 0;
    if (curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &status) != CURLE_OK || status != 200) {
        return WidgetFetchError(WidgetUsageLoaderError::invalidResponse);
    }
    auto snapshot = WidgetUsageSnapshot::decode(sink.body);
    if (!snapshot) {
        return WidgetFetchError(snapshot.error());
    }
    return std::move(snapshot).value();
}

WidgetUsageLoader WidgetUsageLoader::live() {
    return live(WidgetFeedEndpoint{});
}

WidgetUsageLoader WidgetUsageLoader::live(WidgetFeedEndpoint endpoint) {
    return WidgetUsageLoader([endpoint] { return fetchWidgetUsageSnapshot(endpoint); },
                             [] { return std::chrono::system_clock::now(); });
}

} // namespace gaugewell
