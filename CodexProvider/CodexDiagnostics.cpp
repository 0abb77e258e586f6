#include "CodexDiagnostics.h"

#include "UsageDomain/Translatable.h"

namespace gaugewell {

ProviderDiagnostic makeDiagnostic(CodexDiagnostic diagnostic) {
    using enum DiagnosticSeverity;
    switch (diagnostic) {
    case CodexDiagnostic::experimentalProtocol:
        return {info, "codex.experimental_protocol",
                QT_TRANSLATE_NOOP("Localizable",
                                  "Codex collection uses a capability-probed experimental local protocol.")};
    case CodexDiagnostic::probeFailed:
        return {warning, "codex.probe_failed",
                QT_TRANSLATE_NOOP("Localizable",
                                  "The Codex executable was found but could not be capability-probed.")};
    case CodexDiagnostic::notInstalled:
        return {
            error, "codex.not_installed",
            QT_TRANSLATE_NOOP("Localizable", "Codex is not installed or its executable is not configured.")};
    case CodexDiagnostic::collectionFailed:
        return {error, "codex.collection_failed",
                QT_TRANSLATE_NOOP("Localizable",
                                  "Codex usage collection failed without exposing provider output.")};
    case CodexDiagnostic::schemaError:
        return {
            error, "codex.schema_error",
            QT_TRANSLATE_NOOP("Localizable", "Codex usage data did not match the known normalized schema.")};
    case CodexDiagnostic::streamFailed:
        return {error, "codex.stream_failed",
                QT_TRANSLATE_NOOP("Localizable",
                                  "The Codex app-server output stream could not be monitored safely.")};
    case CodexDiagnostic::writeFailed:
        return {
            error, "codex.write_failed",
            QT_TRANSLATE_NOOP("Localizable", "The collector could not send a request to Codex app-server.")};
    case CodexDiagnostic::malformedLine:
        return {error, "codex.malformed_line",
                QT_TRANSLATE_NOOP("Localizable",
                                  "Codex app-server emitted a line outside the expected JSON protocol.")};
    case CodexDiagnostic::streamEnded:
        return {error, "codex.stream_ended",
                QT_TRANSLATE_NOOP("Localizable",
                                  "Codex app-server ended before returning the requested usage data.")};
    case CodexDiagnostic::protocolError:
        return {
            error, "codex.protocol_error",
            QT_TRANSLATE_NOOP("Localizable",
                              "Codex app-server returned an incomplete or incompatible protocol response.")};
    case CodexDiagnostic::outputLimit:
        return {error, "codex.output_limit",
                QT_TRANSLATE_NOOP("Localizable", "Codex exceeded the collector's safe output limit.")};
    case CodexDiagnostic::launchFailed:
        return {error, "codex.launch_failed",
                QT_TRANSLATE_NOOP("Localizable", "The Codex app-server process could not be started.")};
    case CodexDiagnostic::rpcError:
        return {error, "codex.rpc_error",
                QT_TRANSLATE_NOOP("Localizable", "Codex declined a local usage request; sign-in or protocol "
                                                 "compatibility may need attention.")};
    case CodexDiagnostic::timeout:
        return {error, "codex.timeout",
                QT_TRANSLATE_NOOP("Localizable", "Codex did not respond before the collection deadline.")};
    case CodexDiagnostic::noUsageWindows:
        return {error, "codex.no_usage_windows",
                QT_TRANSLATE_NOOP(
                    "Localizable",
                    "Codex returned no supported usage windows; its app-server response may have changed.")};
    case CodexDiagnostic::invalidUsedPercent:
        return {warning, "codex.invalid_used_percent",
                QT_TRANSLATE_NOOP(
                    "Localizable",
                    "A Codex allowance window was rejected because its percentage was out of range.")};
    case CodexDiagnostic::accountUsageUnavailable:
        return {warning, "codex.account_usage_unavailable",
                QT_TRANSLATE_NOOP(
                    "Localizable",
                    "Codex account token history was unavailable; allowance windows were retained.")};
    case CodexDiagnostic::accountUsageSchema:
        return {
            warning, "codex.account_usage_schema",
            QT_TRANSLATE_NOOP("Localizable", "Codex account token history did not match the known schema.")};
    case CodexDiagnostic::invalidHistoryBucket:
        return {warning, "codex.invalid_history_bucket",
                QT_TRANSLATE_NOOP("Localizable",
                                  "A Codex history bucket was rejected because it had invalid semantics.")};
    }
    return makeDiagnostic(CodexDiagnostic::collectionFailed);
}

CodexDiagnostic diagnosticFor(const CodexProviderError& error) {
    using Kind = CodexProviderError::Kind;
    switch (error.kind) {
    case Kind::rpcError:
        return CodexDiagnostic::rpcError;
    case Kind::launchFailed:
        return CodexDiagnostic::launchFailed;
    case Kind::timedOut:
        return CodexDiagnostic::timeout;
    case Kind::outputLimitExceeded:
        return CodexDiagnostic::outputLimit;
    case Kind::protocolError:
        return CodexDiagnostic::protocolError;
    case Kind::streamEnded:
        return CodexDiagnostic::streamEnded;
    case Kind::malformedLine:
        return CodexDiagnostic::malformedLine;
    case Kind::writeFailed:
        return CodexDiagnostic::writeFailed;
    case Kind::pollFailed:
        return CodexDiagnostic::streamFailed;
    case Kind::executableMissing:
        return CodexDiagnostic::collectionFailed;
    }
    return CodexDiagnostic::collectionFailed;
}

CodexDiagnostic diagnosticFor(const DecodeError&) {
    return CodexDiagnostic::schemaError;
}

const ProviderDescriptor& codexProviderDescriptor() {
    static const ProviderDescriptor descriptor("app.gaugewell.codex.subscription", "Codex",
                                               "Uses Codex's experimental local app-server protocol.");
    return descriptor;
}

const SourceDescriptor& codexAppServerSource() {
    static const SourceDescriptor source("codex.appServer.experimental", "Codex app-server", false);
    return source;
}

} // namespace gaugewell
