#include "ClaudeUsageProvider.h"

#include "ClaudeUsageDiagnostics.h"
#include "Platform/SecureWipe.h"

#include <algorithm>

namespace gaugewell {

namespace {

ProviderCollectionResult failure(const UsageCollectionRequest& request, ClaudeUsageIssue issue,
                                 std::optional<Date> retryNotBefore = std::nullopt) {
    return ProviderCollectionResult(claudeProviderDescriptor(), request.observedAt(), {}, {},
                                    {claudeDiagnostic(issue)}, retryNotBefore);
}

ClaudeUsageIssue issueFor(ClaudeOAuthError error) {
    switch (error) {
    case ClaudeOAuthError::tokenRefreshFailed:
        return ClaudeUsageIssue::authorizationExpired;
    case ClaudeOAuthError::signedOut:
        return ClaudeUsageIssue::authenticationRequired;
    default:
        return ClaudeUsageIssue::collectionFailed;
    }
}

ClaudeUsageIssue issueFor(HttpClientError error) {
    // An answer that is not HTTP at all is reported as such; every other transport problem is a failed
    // collection.
    return error == HttpClientError::invalidResponse ? ClaudeUsageIssue::invalidResponse
                                                     : ClaudeUsageIssue::collectionFailed;
}

} // namespace

ClaudeUsageProvider::ClaudeUsageProvider(std::shared_ptr<ClaudeAccessTokenSource> oauthSession,
                                         std::shared_ptr<HttpClient> http, const ClaudeEndpoints& endpoints,
                                         std::chrono::milliseconds timeout)
    : oauthSession(std::move(oauthSession))
    , http(std::move(http))
    , usageURL(endpoints.usageURL())
    , timeout(timeout) {}

const ProviderDescriptor& ClaudeUsageProvider::descriptor() const {
    return claudeProviderDescriptor();
}

ProviderProbeResult ClaudeUsageProvider::probe() const noexcept {
    bool signedIn = false;
    try {
        signedIn = oauthSession->isSignedIn();
    } catch (...) {
        signedIn = false;
    }
    if (!signedIn) {
        return ProviderProbeResult(claudeProviderDescriptor(), ProviderAvailability::authenticationRequired,
                                   ProviderCapabilities(), std::nullopt, {});
    }
    return ProviderProbeResult(claudeProviderDescriptor(), ProviderAvailability::availableWithLimitations,
                               {ProviderCapabilities::currentWindows, ProviderCapabilities::resetTimes,
                                ProviderCapabilities::modelBreakdown},
                               std::nullopt,
                               {claudeDiagnostic(ClaudeUsageIssue::undocumentedAccountEndpoint)});
}

ProviderCollectionResult ClaudeUsageProvider::collect(const UsageCollectionRequest& request) const noexcept {
    try {
        return collectOrThrow(request);
    } catch (...) {
        // Only allocation failures can get here; the result must still be a result.
        return failure(request, ClaudeUsageIssue::collectionFailed);
    }
}

ProviderCollectionResult ClaudeUsageProvider::collectOrThrow(const UsageCollectionRequest& request) const {
    auto token = oauthSession->validAccessToken();
    if (!token) {
        return failure(request, issueFor(token.error()));
    }
    HttpRequest usageRequest;
    usageRequest.method = "GET";
    usageRequest.url = usageURL;
    usageRequest.headers = {{"Authorization", "Bearer " + *token},
                            {"Accept", "application/json"},
                            {"anthropic-beta", "oauth-2025-04-20"}};
    usageRequest.timeout = timeout;
    usageRequest.maximumResponseBytes = maximumResponseBytes;
    auto response = http->send(usageRequest);
    secureWipe(usageRequest.headers[0].second);
    if (!response) {
        return failure(request, issueFor(response.error()));
    }
    switch (response->status) {
    case 200:
        break;
    case 401:
    case 403:
        return failure(request, ClaudeUsageIssue::authorizationRejected);
    case 429:
        return failure(request, ClaudeUsageIssue::rateLimited,
                       response->retryAfter ? retryAfterDate(*response->retryAfter, request.observedAt())
                                            : std::nullopt);
    default:
        return failure(request, ClaudeUsageIssue::httpError);
    }
    auto normalized =
        ClaudeUsageNormalizer().normalize(response->body, request.connectionID(), request.observedAt());
    if (!normalized) {
        return failure(request, ClaudeUsageIssue::schemaError);
    }
    return std::move(normalized).value();
}

} // namespace gaugewell
