#include "RecordCoding.h"

#include <limits>

namespace gaugewell {

// Every decoder reads its fields into locals in field order before constructing: argument
// evaluation order is unspecified, and the error reported should be the first bad field's.

JsonValue JsonCoder<SourceDescriptor>::encode(const SourceDescriptor& value) {
    return KeyedEncoder()
        .encode("id", value.id())
        .encode("displayName", value.displayName())
        .encode("isDocumented", value.isDocumented())
        .result();
}

SourceDescriptor JsonCoder<SourceDescriptor>::decode(const JsonValue& json, const std::string& path) {
    const KeyedDecoder keyed(json, path);
    auto id = keyed.decode<std::string>("id");
    auto displayName = keyed.decode<std::string>("displayName");
    const auto isDocumented = keyed.decode<bool>("isDocumented");
    return SourceDescriptor(std::move(id), std::move(displayName), isDocumented);
}

JsonValue JsonCoder<UsageWindowSample>::encode(const UsageWindowSample& value) {
    return KeyedEncoder()
        .encode("id", value.id())
        .encode("connectionID", value.connectionID())
        .encode("providerBucketID", value.providerBucketID())
        .encodeIfPresent("providerBucketName", value.providerBucketName())
        .encode("windowKind", value.windowKind())
        .encodeIfPresent("modelID", value.modelID())
        .encode("observedAt", value.observedAt())
        .encodeIfPresent("providerFetchedAt", value.providerFetchedAt())
        .encodeIfPresent("durationSeconds", value.durationSeconds())
        .encodeIfPresent("windowStart", value.windowStart())
        .encodeIfPresent("windowEnd", value.windowEnd())
        .encodeIfPresent("resetAt", value.resetAt())
        .encodeIfPresent("usedFraction", value.usedFraction())
        .encodeIfPresent("remainingFraction", value.remainingFraction())
        .encodeIfPresent("absoluteUsed", value.absoluteUsed())
        .encodeIfPresent("absoluteLimit", value.absoluteLimit())
        .encodeIfPresent("unit", value.unit())
        .encode("authority", value.authority())
        .encode("confidence", value.confidence())
        .encode("coverage", value.coverage())
        .encode("freshness", value.freshness())
        .encode("source", value.source())
        .encodeIfPresent("sourceVersion", value.sourceVersion())
        .result();
}

UsageWindowSample JsonCoder<UsageWindowSample>::decode(const JsonValue& json, const std::string& path) {
    const KeyedDecoder keyed(json, path);
    auto id = keyed.decode<std::string>("id");
    auto connectionID = keyed.decode<Uuid>("connectionID");
    auto providerBucketID = keyed.decode<std::string>("providerBucketID");
    auto providerBucketName = keyed.decodeIfPresent<std::string>("providerBucketName");
    auto windowKind = keyed.decode<UsageWindowKind>("windowKind");
    auto modelID = keyed.decodeIfPresent<std::string>("modelID");
    auto observedAt = keyed.decode<Date>("observedAt");
    auto providerFetchedAt = keyed.decodeIfPresent<Date>("providerFetchedAt");
    auto durationSeconds = keyed.decodeIfPresent<std::int64_t>("durationSeconds");
    auto windowStart = keyed.decodeIfPresent<Date>("windowStart");
    auto windowEnd = keyed.decodeIfPresent<Date>("windowEnd");
    auto resetAt = keyed.decodeIfPresent<Date>("resetAt");
    auto usedFraction = keyed.decodeIfPresent<Decimal>("usedFraction");
    auto remainingFraction = keyed.decodeIfPresent<Decimal>("remainingFraction");
    auto absoluteUsed = keyed.decodeIfPresent<Decimal>("absoluteUsed");
    auto absoluteLimit = keyed.decodeIfPresent<Decimal>("absoluteLimit");
    auto unit = keyed.decodeIfPresent<UsageUnit>("unit");
    auto authority = keyed.decode<MeasurementAuthority>("authority");
    auto confidence = keyed.decode<MeasurementConfidence>("confidence");
    auto coverage = keyed.decode<MeasurementCoverage>("coverage");
    auto freshness = keyed.decode<MeasurementFreshness>("freshness");
    auto source = keyed.decode<SourceDescriptor>("source");
    auto sourceVersion = keyed.decodeIfPresent<std::string>("sourceVersion");
    return UsageWindowSample(std::move(id), connectionID, std::move(providerBucketID),
                             std::move(providerBucketName), windowKind, std::move(modelID), observedAt,
                             providerFetchedAt, durationSeconds, windowStart, windowEnd, resetAt,
                             usedFraction, remainingFraction, absoluteUsed, absoluteLimit, unit, authority,
                             confidence, coverage, freshness, std::move(source), std::move(sourceVersion));
}

JsonValue JsonCoder<TokenUsageBucket>::encode(const TokenUsageBucket& value) {
    return KeyedEncoder()
        .encode("id", value.id())
        .encode("connectionID", value.connectionID())
        .encode("intervalStart", value.intervalStart())
        .encode("intervalEnd", value.intervalEnd())
        .encode("calendarIdentifier", value.calendarIdentifier())
        .encode("timeZoneIdentifier", value.timeZoneIdentifier())
        .encodeIfPresent("modelID", value.modelID())
        .encodeIfPresent("inputTokens", value.inputTokens())
        .encodeIfPresent("outputTokens", value.outputTokens())
        .encodeIfPresent("cacheReadTokens", value.cacheReadTokens())
        .encodeIfPresent("cacheWriteTokens", value.cacheWriteTokens())
        .encodeIfPresent("totalTokens", value.totalTokens())
        .encode("authority", value.authority())
        .encode("confidence", value.confidence())
        .encode("coverage", value.coverage())
        .encode("source", value.source())
        .encodeIfPresent("sourceVersion", value.sourceVersion())
        .result();
}

TokenUsageBucket JsonCoder<TokenUsageBucket>::decode(const JsonValue& json, const std::string& path) {
    const KeyedDecoder keyed(json, path);
    auto id = keyed.decode<std::string>("id");
    auto connectionID = keyed.decode<Uuid>("connectionID");
    auto intervalStart = keyed.decode<Date>("intervalStart");
    auto intervalEnd = keyed.decode<Date>("intervalEnd");
    auto calendarIdentifier = keyed.decode<std::string>("calendarIdentifier");
    auto timeZoneIdentifier = keyed.decode<std::string>("timeZoneIdentifier");
    auto modelID = keyed.decodeIfPresent<std::string>("modelID");
    auto inputTokens = keyed.decodeIfPresent<std::int64_t>("inputTokens");
    auto outputTokens = keyed.decodeIfPresent<std::int64_t>("outputTokens");
    auto cacheReadTokens = keyed.decodeIfPresent<std::int64_t>("cacheReadTokens");
    auto cacheWriteTokens = keyed.decodeIfPresent<std::int64_t>("cacheWriteTokens");
    auto totalTokens = keyed.decodeIfPresent<std::int64_t>("totalTokens");
    auto authority = keyed.decode<MeasurementAuthority>("authority");
    auto confidence = keyed.decode<MeasurementConfidence>("confidence");
    auto coverage = keyed.decode<MeasurementCoverage>("coverage");
    auto source = keyed.decode<SourceDescriptor>("source");
    auto sourceVersion = keyed.decodeIfPresent<std::string>("sourceVersion");
    return TokenUsageBucket(std::move(id), connectionID, intervalStart, intervalEnd,
                            std::move(calendarIdentifier), std::move(timeZoneIdentifier), std::move(modelID),
                            inputTokens, outputTokens, cacheReadTokens, cacheWriteTokens, totalTokens,
                            authority, confidence, coverage, std::move(source), std::move(sourceVersion));
}

JsonValue JsonCoder<ProviderDescriptor>::encode(const ProviderDescriptor& value) {
    return KeyedEncoder()
        .encode("id", value.id())
        .encode("displayName", value.displayName())
        .encodeIfPresent("integrationNotice", value.integrationNotice())
        .result();
}

ProviderDescriptor JsonCoder<ProviderDescriptor>::decode(const JsonValue& json, const std::string& path) {
    const KeyedDecoder keyed(json, path);
    auto id = keyed.decode<std::string>("id");
    auto displayName = keyed.decode<std::string>("displayName");
    auto integrationNotice = keyed.decodeIfPresent<std::string>("integrationNotice");
    return ProviderDescriptor(std::move(id), std::move(displayName), std::move(integrationNotice));
}

JsonValue JsonCoder<ProviderCapabilities>::encode(ProviderCapabilities value) {
    return JsonValue::number(static_cast<std::int64_t>(value.rawValue()));
}

ProviderCapabilities JsonCoder<ProviderCapabilities>::decode(const JsonValue& json, const std::string& path) {
    const auto raw = JsonCoder<std::int64_t>::decode(json, path);
    if (raw < 0 || raw > std::numeric_limits<ProviderCapabilities::RawValue>::max()) {
        failDecoding(path, "expected an unsigned 16-bit number");
    }
    return ProviderCapabilities(static_cast<ProviderCapabilities::RawValue>(raw));
}

JsonValue JsonCoder<ProviderDiagnostic>::encode(const ProviderDiagnostic& value) {
    return KeyedEncoder()
        .encode("severity", value.severity())
        .encode("code", value.code())
        .encode("message", value.message())
        .result();
}

ProviderDiagnostic JsonCoder<ProviderDiagnostic>::decode(const JsonValue& json, const std::string& path) {
    const KeyedDecoder keyed(json, path);
    auto severity = keyed.decode<DiagnosticSeverity>("severity");
    auto code = keyed.decode<std::string>("code");
    auto message = keyed.decode<std::string>("message");
    return ProviderDiagnostic(severity, std::move(code), std::move(message));
}

JsonValue JsonCoder<ProviderProbeResult>::encode(const ProviderProbeResult& value) {
    return KeyedEncoder()
        .encode("provider", value.provider())
        .encode("availability", value.availability())
        .encode("capabilities", value.capabilities())
        .encodeIfPresent("sourceVersion", value.sourceVersion())
        .encode("diagnostics", value.diagnostics())
        .result();
}

ProviderProbeResult JsonCoder<ProviderProbeResult>::decode(const JsonValue& json, const std::string& path) {
    const KeyedDecoder keyed(json, path);
    auto provider = keyed.decode<ProviderDescriptor>("provider");
    auto availability = keyed.decode<ProviderAvailability>("availability");
    auto capabilities = keyed.decode<ProviderCapabilities>("capabilities");
    auto sourceVersion = keyed.decodeIfPresent<std::string>("sourceVersion");
    auto diagnostics = keyed.decode<std::vector<ProviderDiagnostic>>("diagnostics");
    return ProviderProbeResult(std::move(provider), availability, capabilities, std::move(sourceVersion),
                               std::move(diagnostics));
}

} // namespace gaugewell
