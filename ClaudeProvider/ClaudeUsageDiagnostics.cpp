#include "ClaudeUsageDiagnostics.h"

#include "UsageDomain/Translatable.h"

namespace gaugewell {

ProviderDiagnostic claudeDiagnostic(ClaudeUsageIssue issue) {
    using enum DiagnosticSeverity;
    switch (issue) {
    case ClaudeUsageIssue::undocumentedAccountEndpoint:
        return {info, "claude.undocumented_account_endpoint",
                QT_TRANSLATE_NOOP("Localizable", "Claude usage is queried live from an authenticated, "
                                                 "undocumented personal-account endpoint.")};
    case ClaudeUsageIssue::invalidUtilization:
        return {
            warning, "claude.invalid_utilization",
            QT_TRANSLATE_NOOP("Localizable",
                              "A Claude usage window was rejected because its percentage was out of range.")};
    case ClaudeUsageIssue::invalidReset:
        return {warning, "claude.invalid_reset",
                QT_TRANSLATE_NOOP("Localizable", "A Claude reset timestamp did not match the known schema.")};
    case ClaudeUsageIssue::noUsageWindows:
        return {error, "claude.no_usage_windows",
                QT_TRANSLATE_NOOP(
                    "Localizable",
                    "Claude returned no supported usage windows; its account response may have changed.")};
    case ClaudeUsageIssue::authenticationRequired:
        return {error, "claude.authentication_required",
                QT_TRANSLATE_NOOP("Localizable", "Sign in to Claude to read account usage.")};
    case ClaudeUsageIssue::authorizationExpired:
        return {error, "claude.authentication_expired",
                QT_TRANSLATE_NOOP("Localizable", "Claude authorization expired. Reconnect Claude.")};
    case ClaudeUsageIssue::authorizationRejected:
        return {
            error, "claude.authentication_expired",
            QT_TRANSLATE_NOOP("Localizable", "Claude rejected the account authorization. Reconnect Claude.")};
    case ClaudeUsageIssue::rateLimited:
        return {error, "claude.rate_limited",
                QT_TRANSLATE_NOOP("Localizable", "Claude temporarily rate-limited usage checks.")};
    case ClaudeUsageIssue::httpError:
        return {error, "claude.http_error",
                QT_TRANSLATE_NOOP("Localizable", "Claude usage is temporarily unavailable.")};
    case ClaudeUsageIssue::invalidResponse:
        return {error, "claude.invalid_response",
                QT_TRANSLATE_NOOP("Localizable", "Claude returned an invalid network response.")};
    case ClaudeUsageIssue::schemaError:
        return {error, "claude.schema_error",
                QT_TRANSLATE_NOOP("Localizable", "Claude usage did not match the known account schema.")};
    case ClaudeUsageIssue::collectionFailed:
        break;
    }
    return {error, "claude.collection_failed",
            QT_TRANSLATE_NOOP("Localizable", "Claude usage could not be refreshed from the account.")};
}

const ProviderDescriptor& claudeProviderDescriptor() {
    static const ProviderDescriptor descriptor("app.gaugewell.claude.subscription", "Claude",
                                               "Queries the signed-in Claude account directly. The personal "
                                               "usage endpoint is not publicly documented "
                                               "by Anthropic.");
    return descriptor;
}

const SourceDescriptor& claudeAccountUsageSource() {
    static const SourceDescriptor source("claude.oauthUsage", "Claude account usage", false);
    return source;
}

} // namespace gaugewell
