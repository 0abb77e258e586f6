#pragma once

#include "UsageDomain/TokenUsageBucket.h"
#include "UsageDomain/UsageWindowSample.h"

#include <chrono>

namespace gaugewell::testing {

inline Date referencePlus(double seconds) {
    return dateFromSecondsSinceReferenceDate(seconds);
}

inline const Uuid& fixedConnectionID() {
    static const Uuid id = *Uuid::parse("A115A6E0-337E-4F26-9809-6B2E75C39D01");
    return id;
}

inline SourceDescriptor testSource() {
    return SourceDescriptor("codex.appServer.experimental", "Codex app-server", false);
}

// Only the required fields set.
inline UsageWindowSample minimalSample(Date observedAt = referencePlus(800'000'000)) {
    return UsageWindowSample(
        "sample", fixedConnectionID(), "primary", std::nullopt, UsageWindowKind::fiveHour, std::nullopt,
        observedAt, std::nullopt, std::nullopt, std::nullopt, std::nullopt, std::nullopt, std::nullopt,
        std::nullopt, std::nullopt, std::nullopt, std::nullopt, MeasurementAuthority::vendorAuthoritative,
        MeasurementConfidence::exact, MeasurementCoverage::account, MeasurementFreshness::live, testSource(),
        std::nullopt);
}

// Every field set.
inline UsageWindowSample fullSample() {
    return UsageWindowSample(
        "codex:primary", fixedConnectionID(), "primary", "5-hour limit", UsageWindowKind::modelSpecific,
        "gpt-5", referencePlus(800'000'000.25), referencePlus(799'999'990.5), 18'000,
        referencePlus(799'990'000), referencePlus(800'008'000), referencePlus(800'008'000),
        Decimal::parse("0.415"), Decimal::parse("0.585"), Decimal::parse("41.5"), Decimal(100),
        UsageUnit::requests, MeasurementAuthority::vendorCached, MeasurementConfidence::high,
        MeasurementCoverage::organization, MeasurementFreshness::recent, testSource(), "codex-cli 0.169.0");
}

inline TokenUsageBucket sampleBucket(std::optional<std::int64_t> totalTokens) {
    return TokenUsageBucket("codex:day:2026-11-21", fixedConnectionID(), referencePlus(817'084'800),
                            referencePlus(817'171'200), "gregorian", "UTC", std::nullopt, 1200, 300,
                            std::nullopt, std::nullopt, totalTokens,
                            MeasurementAuthority::vendorAuthoritative, MeasurementConfidence::exact,
                            MeasurementCoverage::account, testSource(), std::nullopt);
}

} // namespace gaugewell::testing
