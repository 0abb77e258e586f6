#pragma once

#include "Date.h"
#include "SourceDescriptor.h"
#include "UsageEnumerations.h"
#include "Uuid.h"

#include <cstdint>
#include <optional>
#include <string>

namespace gaugewell {

// Token totals for one interval, a calendar day in practice. The counts are independent:
// `totalTokens` is never derived from the others here.
class TokenUsageBucket {
public:
    TokenUsageBucket(std::string id, Uuid connectionID, Date intervalStart, Date intervalEnd,
                     std::string calendarIdentifier, std::string timeZoneIdentifier,
                     std::optional<std::string> modelID, std::optional<std::int64_t> inputTokens,
                     std::optional<std::int64_t> outputTokens, std::optional<std::int64_t> cacheReadTokens,
                     std::optional<std::int64_t> cacheWriteTokens, std::optional<std::int64_t> totalTokens,
                     MeasurementAuthority authority, MeasurementConfidence confidence,
                     MeasurementCoverage coverage, SourceDescriptor source,
                     std::optional<std::string> sourceVersion);

    const std::string& id() const { return id_; }
    const Uuid& connectionID() const { return connectionID_; }
    Date intervalStart() const { return intervalStart_; }
    Date intervalEnd() const { return intervalEnd_; }
    const std::string& calendarIdentifier() const { return calendarIdentifier_; }
    const std::string& timeZoneIdentifier() const { return timeZoneIdentifier_; }
    const std::optional<std::string>& modelID() const { return modelID_; }
    const std::optional<std::int64_t>& inputTokens() const { return inputTokens_; }
    const std::optional<std::int64_t>& outputTokens() const { return outputTokens_; }
    const std::optional<std::int64_t>& cacheReadTokens() const { return cacheReadTokens_; }
    const std::optional<std::int64_t>& cacheWriteTokens() const { return cacheWriteTokens_; }
    const std::optional<std::int64_t>& totalTokens() const { return totalTokens_; }
    MeasurementAuthority authority() const { return authority_; }
    MeasurementConfidence confidence() const { return confidence_; }
    MeasurementCoverage coverage() const { return coverage_; }
    const SourceDescriptor& source() const { return source_; }
    const std::optional<std::string>& sourceVersion() const { return sourceVersion_; }

    bool operator==(const TokenUsageBucket&) const = default;
    std::size_t hashValue() const;

private:
    std::string id_;
    Uuid connectionID_;
    Date intervalStart_;
    Date intervalEnd_;
    std::string calendarIdentifier_;
    std::string timeZoneIdentifier_;
    std::optional<std::string> modelID_;
    std::optional<std::int64_t> inputTokens_;
    std::optional<std::int64_t> outputTokens_;
    std::optional<std::int64_t> cacheReadTokens_;
    std::optional<std::int64_t> cacheWriteTokens_;
    std::optional<std::int64_t> totalTokens_;
    MeasurementAuthority authority_;
    MeasurementConfidence confidence_;
    MeasurementCoverage coverage_;
    SourceDescriptor source_;
    std::optional<std::string> sourceVersion_;
};

} // namespace gaugewell

template <> struct std::hash<gaugewell::TokenUsageBucket> {
    std::size_t operator()(const gaugewell::TokenUsageBucket& value) const noexcept {
        return value.hashValue();
    }
};
