#include "CodexPayloadNormalizer.h"

#include "CodexDiagnostics.h"
#include "CodexText.h"

#include <chrono>
#include <utility>
#include <vector>

namespace gaugewell {

namespace {

constexpr std::int64_t fiveHourMinutes = 300;
constexpr std::int64_t sevenDayMinutes = 10'080;
constexpr std::int64_t oneYearOfMinutes = 525'600;

struct Context {
    const Uuid& connectionID;
    std::string connectionText;
    Date observedAt;
    const std::optional<std::string>& sourceVersion;
    std::vector<ProviderDiagnostic>& diagnostics;
};

UsageWindowKind windowKind(const std::optional<std::int64_t>& minutes) {
    if (!minutes) {
        return UsageWindowKind::unknown;
    }
    if (*minutes == fiveHourMinutes) {
        return UsageWindowKind::fiveHour;
    }
    if (*minutes == sevenDayMinutes) {
        return UsageWindowKind::sevenDay;
    }
    return UsageWindowKind::custom;
}

std::string wholeUnixSeconds(Date date) {
    return std::to_string(std::chrono::duration_cast<std::chrono::seconds>(date.time_since_epoch()).count());
}

void appendWindow(const Context& context, const std::string& bucketID, const CodexRateLimitSnapshot& snapshot,
                  const CodexRateLimitWindow& window, std::string_view label,
                  std::vector<UsageWindowSample>& windows) {
    if (window.usedPercent < 0 || window.usedPercent > 100) {
        context.diagnostics.push_back(makeDiagnostic(CodexDiagnostic::invalidUsedPercent));
        return;
    }
    std::optional<std::int64_t> durationSeconds;
    if (window.windowDurationMins && *window.windowDurationMins >= 1 &&
        *window.windowDurationMins <= oneYearOfMinutes) {
        durationSeconds = *window.windowDurationMins * 60;
    }
    std::optional<Date> resetAt;
    if (window.resetsAt && *window.resetsAt > 0) {
        resetAt = dateFromUnixSeconds(static_cast<double>(*window.resetsAt));
    }
    std::string providerBucketID = bucketID + "." + std::string(label);
    std::string id =
        context.connectionText + ":" + providerBucketID + ":" + wholeUnixSeconds(context.observedAt);
    windows.emplace_back(std::move(id), context.connectionID, std::move(providerBucketID), snapshot.limitName,
                         windowKind(window.windowDurationMins), std::nullopt, context.observedAt,
                         std::nullopt, durationSeconds, std::nullopt, std::nullopt, resetAt,
                         Decimal(window.usedPercent).dividedBy100(), std::nullopt, std::nullopt, std::nullopt,
                         std::nullopt, MeasurementAuthority::vendorAuthoritative,
                         MeasurementConfidence::exact, MeasurementCoverage::account,
                         MeasurementFreshness::live, codexAppServerSource(), context.sourceVersion);
}

std::vector<UsageWindowSample> normalizeWindows(const Context& context,
                                                const CodexRateLimitsPayload& payload) {
    std::vector<std::pair<std::string, const CodexRateLimitSnapshot*>> pairs;
    if (payload.rateLimitsByLimitId && !payload.rateLimitsByLimitId->empty()) {
        for (const auto& [key, snapshot] : *payload.rateLimitsByLimitId) {
            pairs.emplace_back(key, &snapshot);
        }
    } else {
        pairs.emplace_back(payload.rateLimits.limitId.value_or("default"), &payload.rateLimits);
    }

    std::vector<UsageWindowSample> windows;
    for (const auto& [key, snapshot] : pairs) {
        const bool hasLimitId =
            snapshot->limitId && !trimmedWhitespaceAndNewlines(*snapshot->limitId).empty();
        const std::string& bucketID = hasLimitId ? *snapshot->limitId : key;
        if (snapshot->primary) {
            appendWindow(context, bucketID, *snapshot, *snapshot->primary, "primary", windows);
        }
        if (snapshot->secondary) {
            appendWindow(context, bucketID, *snapshot, *snapshot->secondary, "secondary", windows);
        }
    }
    return windows;
}

std::vector<TokenUsageBucket> normalizeBuckets(const Context& context,
                                               const CodexAccountUsagePayload& payload) {
    std::vector<TokenUsageBucket> buckets;
    if (!payload.dailyUsageBuckets) {
        return buckets;
    }
    for (const auto& bucket : *payload.dailyUsageBuckets) {
        const auto start = CodexPayloadNormalizer::parseDay(bucket.startDate);
        if (bucket.tokens < 0 || !start) {
            context.diagnostics.push_back(makeDiagnostic(CodexDiagnostic::invalidHistoryBucket));
            continue;
        }
        // A UTC day has no daylight-saving shift: one calendar day is always 24 hours.
        const Date end = *start + std::chrono::days(1);
        buckets.emplace_back(context.connectionText + ":codex.account:" + bucket.startDate,
                             context.connectionID, *start, end, "gregorian", "UTC", std::nullopt,
                             std::nullopt, std::nullopt, std::nullopt, std::nullopt, bucket.tokens,
                             MeasurementAuthority::vendorAuthoritative, MeasurementConfidence::exact,
                             MeasurementCoverage::account, codexAppServerSource(), context.sourceVersion);
    }
    return buckets;
}

std::vector<TokenUsageBucket> accountUsageBuckets(const Context& context,
                                                  const std::optional<std::string>& accountUsageData) {
    if (!accountUsageData) {
        context.diagnostics.push_back(makeDiagnostic(CodexDiagnostic::accountUsageUnavailable));
        return {};
    }
    const auto envelope = decodeJson<CodexAccountUsageEnvelope>(std::string_view(*accountUsageData));
    if (!envelope) {
        context.diagnostics.push_back(makeDiagnostic(CodexDiagnostic::accountUsageSchema));
        return {};
    }
    if (envelope->error || !envelope->result) {
        context.diagnostics.push_back(makeDiagnostic(CodexDiagnostic::accountUsageUnavailable));
        return {};
    }
    return normalizeBuckets(context, *envelope->result);
}

bool isDigits(std::string_view text) {
    for (const char c : text) {
        if (c < '0' || c > '9') {
            return false;
        }
    }
    return true;
}

int number(std::string_view digits) {
    int value = 0;
    for (const char c : digits) {
        value = value * 10 + (c - '0');
    }
    return value;
}

} // namespace

std::optional<Date> CodexPayloadNormalizer::parseDay(std::string_view text) {
    if (text.size() != 10 || text[4] != '-' || text[7] != '-' || !isDigits(text.substr(0, 4)) ||
        !isDigits(text.substr(5, 2)) || !isDigits(text.substr(8, 2))) {
        return std::nullopt;
    }
    const std::chrono::year_month_day day{
        std::chrono::year(number(text.substr(0, 4))),
        std::chrono::month(static_cast<unsigned>(number(text.substr(5, 2)))),
        std::chrono::day(static_cast<unsigned>(number(text.substr(8, 2))))};
    if (!day.ok() || day.year() < std::chrono::year(1)) {
        return std::nullopt;
    }
    return Date(std::chrono::sys_days(day));
}

Expected<ProviderCollectionResult, CodexNormalizationError> CodexPayloadNormalizer::normalize(
    std::string_view rateLimitsData, const std::optional<std::string>& accountUsageData,
    const Uuid& connectionID, Date observedAt, const std::optional<std::string>& sourceVersion) {
    auto envelope = decodeJson<CodexRateLimitsEnvelope>(rateLimitsData);
    if (!envelope) {
        return unexpected(CodexNormalizationError(envelope.error()));
    }
    if (envelope->error || !envelope->result) {
        return unexpected(
            CodexNormalizationError(CodexProviderError(CodexProviderError::Kind::protocolError)));
    }

    std::vector<ProviderDiagnostic> diagnostics;
    const Context context{connectionID, connectionID.text(), observedAt, sourceVersion, diagnostics};
    auto windows = normalizeWindows(context, *envelope->result);
    if (windows.empty()) {
        diagnostics.push_back(makeDiagnostic(CodexDiagnostic::noUsageWindows));
    }
    auto buckets = accountUsageBuckets(context, accountUsageData);
    return ProviderCollectionResult(codexProviderDescriptor(), observedAt, std::move(windows),
                                    std::move(buckets), std::move(diagnostics));
}

} // namespace gaugewell
