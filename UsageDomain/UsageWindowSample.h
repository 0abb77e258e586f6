#pragma once

#include "Date.h"
#include "Decimal.h"
#include "SourceDescriptor.h"
#include "UsageEnumerations.h"
#include "Uuid.h"

#include <cstdint>
#include <optional>
#include <string>

namespace gaugewell {

// One observation of one allowance window of one provider bucket. A plain value: the
// producing collector decides what goes into each field; nothing here validates or derives.
class UsageWindowSample {
public:
    UsageWindowSample(std::string id, Uuid connectionID, std::string providerBucketID,
                      std::optional<std::string> providerBucketName, UsageWindowKind windowKind,
                      std::optional<std::string> modelID, Date observedAt,
                      std::optional<Date> providerFetchedAt, std::optional<std::int64_t> durationSeconds,
                      std::optional<Date> windowStart, std::optional<Date> windowEnd,
                      std::optional<Date> resetAt, std::optional<Decimal> usedFraction,
                      std::optional<Decimal> remainingFraction, std::optional<Decimal> absoluteUsed,
                      std::optional<Decimal> absoluteLimit, std::optional<UsageUnit> unit,
                      MeasurementAuthority authority, MeasurementConfidence confidence,
                      MeasurementCoverage coverage, MeasurementFreshness freshness, SourceDescriptor source,
                      std::optional<std::string> sourceVersion);

    const std::string& id() const { return id_; }
    const Uuid& connectionID() const { return connectionID_; }
    const std::string& providerBucketID() const { return providerBucketID_; }
    const std::optional<std::string>& providerBucketName() const { return providerBucketName_; }
    UsageWindowKind windowKind() const { return windowKind_; }
    const std::optional<std::string>& modelID() const { return modelID_; }
    Date observedAt() const { return observedAt_; }
    const std::optional<Date>& providerFetchedAt() const { return providerFetchedAt_; }
    const std::optional<std::int64_t>& durationSeconds() const { return durationSeconds_; }
    const std::optional<Date>& windowStart() const { return windowStart_; }
    const std::optional<Date>& windowEnd() const { return windowEnd_; }
    const std::optional<Date>& resetAt() const { return resetAt_; }
    const std::optional<Decimal>& usedFraction() const { return usedFraction_; }
    const std::optional<Decimal>& remainingFraction() const { return remainingFraction_; }
    const std::optional<Decimal>& absoluteUsed() const { return absoluteUsed_; }
    const std::optional<Decimal>& absoluteLimit() const { return absoluteLimit_; }
    const std::optional<UsageUnit>& unit() const { return unit_; }
    MeasurementAuthority authority() const { return authority_; }
    MeasurementConfidence confidence() const { return confidence_; }
    MeasurementCoverage coverage() const { return coverage_; }
    MeasurementFreshness freshness() const { return freshness_; }
    const SourceDescriptor& source() const { return source_; }
    const std::optional<std::string>& sourceVersion() const { return sourceVersion_; }

    bool operator==(const UsageWindowSample&) const = default;
    std::size_t hashValue() const;

private:
    std::string id_;
    Uuid connectionID_;
    std::string providerBucketID_;
    std::optional<std::string> providerBucketName_;
    UsageWindowKind windowKind_;
    std::optional<std::string> modelID_;
    Date observedAt_;
    std::optional<Date> providerFetchedAt_;
    std::optional<std::int64_t> durationSeconds_;
    std::optional<Date> windowStart_;
    std::optional<Date> windowEnd_;
    std::optional<Date> resetAt_;
    std::optional<Decimal> usedFraction_;
    std::optional<Decimal> remainingFraction_;
    std::optional<Decimal> absoluteUsed_;
    std::optional<Decimal> absoluteLimit_;
    std::optional<UsageUnit> unit_;
    MeasurementAuthority authority_;
    MeasurementConfidence confidence_;
    MeasurementCoverage coverage_;
    MeasurementFreshness freshness_;
    SourceDescriptor source_;
    std::optional<std::string> sourceVersion_;
};

} // namespace gaugewell

template <> struct std::hash<gaugewell::UsageWindowSample> {
    std::size_t operator()(const gaugewell::UsageWindowSample& value) const noexcept {
        return value.hashValue();
    }
};
