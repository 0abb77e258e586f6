#include "UsageWindowSample.h"

namespace gaugewell {

UsageWindowSample::UsageWindowSample(
    std::string id, Uuid connectionID, std::string providerBucketID,
    std::optional<std::string> providerBucketName, UsageWindowKind windowKind,
    std::optional<std::string> modelID, Date observedAt, std::optional<Date> providerFetchedAt,
    std::optional<std::int64_t> durationSeconds, std::optional<Date> windowStart,
    std::optional<Date> windowEnd, std::optional<Date> resetAt, std::optional<Decimal> usedFraction,
    std::optional<Decimal> remainingFraction, std::optional<Decimal> absoluteUsed,
    std::optional<Decimal> absoluteLimit, std::optional<UsageUnit> unit, MeasurementAuthority authority,
    MeasurementConfidence confidence, MeasurementCoverage coverage, MeasurementFreshness freshness,
    SourceDescriptor source, std::optional<std::string> sourceVersion)
    : id_(std::move(id))
    , connectionID_(connectionID)
    , providerBucketID_(std::move(providerBucketID))
    , providerBucketName_(std::move(providerBucketName))
    , windowKind_(windowKind)
    , modelID_(std::move(modelID))
    , observedAt_(observedAt)
    , providerFetchedAt_(providerFetchedAt)
    , durationSeconds_(durationSeconds)
    , windowStart_(windowStart)
    , windowEnd_(windowEnd)
    , resetAt_(resetAt)
    , usedFraction_(usedFraction)
    , remainingFraction_(remainingFraction)
    , absoluteUsed_(absoluteUsed)
    , absoluteLimit_(absoluteLimit)
    , unit_(unit)
    , authority_(authority)
    , confidence_(confidence)
    , coverage_(coverage)
    , freshness_(freshness)
    , source_(std::move(source))
    , sourceVersion_(std::move(sourceVersion)) {}

std::size_t UsageWindowSample::hashValue() const {
    return HashBuilder()
        .combine(id_)
        .combine(connectionID_)
        .combine(providerBucketID_)
        .combine(providerBucketName_)
        .combine(windowKind_)
        .combine(modelID_)
        .combine(observedAt_)
        .combine(providerFetchedAt_)
        .combine(durationSeconds_)
        .combine(windowStart_)
        .combine(windowEnd_)
        .combine(resetAt_)
        .combine(usedFraction_)
        .combine(remainingFraction_)
        .combine(absoluteUsed_)
        .combine(absoluteLimit_)
        .combine(unit_)
        .combine(authority_)
        .combine(confidence_)
        .combine(coverage_)
        .combine(freshness_)
        .combine(source_)
        .combine(sourceVersion_)
        .result();
}

} // namespace gaugewell
