#pragma once

#include "UsageDomain/ProviderDescriptor.h"
#include "UsageDomain/ProviderDiagnostic.h"
#include "UsageDomain/SourceDescriptor.h"

namespace gaugewell {

// Everything the Claude collector can report. Two cases share the code "claude.authentication_expired"
// and differ in their message.
enum class ClaudeUsageIssue {
    undocumentedAccountEndpoint,
    invalidUtilization,
    invalidReset,
    noUsageWindows,
    authenticationRequired,
    authorizationExpired,  // the token could not be refreshed
    authorizationRejected, // the server answered 401 or 403
    rateLimited,
    httpError,
    invalidResponse,
    schemaError,
    collectionFailed,
};

// The one place where the Claude collector's findings become codes, severities and sentences.
ProviderDiagnostic claudeDiagnostic(ClaudeUsageIssue issue);

const ProviderDescriptor& claudeProviderDescriptor();
const SourceDescriptor& claudeAccountUsageSource();

} // namespace gaugewell
