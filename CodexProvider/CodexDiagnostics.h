#pragma once

#include "CodexProviderError.h"
#include "UsageDomain/JsonCoding.h"
#include "UsageDomain/ProviderDescriptor.h"
#include "UsageDomain/ProviderDiagnostic.h"
#include "UsageDomain/SourceDescriptor.h"

namespace gaugewell {

// Every finding the Codex collector can report. The one place where they get their codes,
// severities and sentences, so that no output of the tool can ever end up in one.
enum class CodexDiagnostic {
    experimentalProtocol,
    probeFailed,
    notInstalled,
    collectionFailed,
    schemaError,
    streamFailed,
    writeFailed,
    malformedLine,
    streamEnded,
    protocolError,
    outputLimit,
    launchFailed,
    rpcError,
    timeout,
    noUsageWindows,
    invalidUsedPercent,
    accountUsageUnavailable,
    accountUsageSchema,
    invalidHistoryBucket,
};

ProviderDiagnostic makeDiagnostic(CodexDiagnostic diagnostic);

// What a failed exchange or normalisation is reported as (always of severity error).
CodexDiagnostic diagnosticFor(const CodexProviderError& error);
CodexDiagnostic diagnosticFor(const DecodeError& error);

const ProviderDescriptor& codexProviderDescriptor();
// The source of every record read from the app-server.
const SourceDescriptor& codexAppServerSource();

} // namespace gaugewell
