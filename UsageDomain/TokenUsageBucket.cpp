#include "TokenUsageBucket.h"

namespace gaugewell {

TokenUsageBucket::TokenUsageBucket(
    std::string id, Uuid connectionID, Date intervalStart, Date intervalEnd, std::string calendarIdentifier,
    std::string timeZoneIdentifier, std::optional<std::string> modelID,
    std::optional<std::int64_t> inputTokens, std::optional<std::int64_t> outputTokens,
    std::optional<std::int64_t> cacheReadTokens, std::optional<std::int64_t> cacheWriteTokens,
    std::optional<std::int64_t> totalTokens, MeasurementAuthority authority, MeasurementConfidence confidence,
    MeasurementCoverage coverage, SourceDescriptor source, std::optional<std::string> sourceVersion)
    : id_(std::move(id))
    , connectionID_(connectionID)
    , intervalStart_(intervalStart)
    , intervalEnd_(intervalEnd)
    , calendarIdentifier_(std::move(calendarIdentifier))
    , timeZoneIdentifier_(std::move(timeZoneIdentifier))
    , modelID_(std::move(modelID))
    , inputTokens_(inputTokens)
    , outputTokens_(outputTokens)
    , cacheReadTokens_(cacheReadTokens)
    , cacheWriteTokens_(cacheWriteTokens)
    , totalTokens_(totalTokens)
    , authority_(authority)
    , confidence_(confidence)
    , coverage_(coverage)
    , source_(std::move(source))
    , sourceVersion_(std::move(sourceVersion)) {}

std::size_t TokenUsageBucket::hashValue() const {
    return HashBuilder()
        .combine(id_)
        .combine(connectionID_)
        .combine(intervalStart_)
        .combine(intervalEnd_)
        .combine(calendarIdentifier_)
        .combine(timeZoneIdentifier_)
        .combine(modelID_)
        .combine(inputTokens_)
        .combine(outputTokens_)
        .combine(cacheReadTokens_)
        .combine(cacheWriteTokens_)
        .combine(totalTokens_)
        .combine(authority_)
        .combine(confidence_)
        .combine(coverage_)
        .combine(source_)
        .combine(sourceVersion_)
        .result();
}

} // namespace gaugewell
