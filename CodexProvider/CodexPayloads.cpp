#include "CodexPayloads.h"

namespace gaugewell {

CodexRPCError JsonCoder<CodexRPCError>::decode(const JsonValue& json, const std::string& path) {
    const KeyedDecoder keys(json, path);
    return CodexRPCError{keys.decode<std::int64_t>("code")};
}

CodexRPCIdentifier JsonCoder<CodexRPCIdentifier>::decode(const JsonValue& json, const std::string& path) {
    const KeyedDecoder keys(json, path);
    return CodexRPCIdentifier{keys.decodeIfPresent<std::int64_t>("id"),
                              keys.decodeIfPresent<CodexRPCError>("error")};
}

CodexRateLimitWindow JsonCoder<CodexRateLimitWindow>::decode(const JsonValue& json, const std::string& path) {
    const KeyedDecoder keys(json, path);
    return CodexRateLimitWindow{keys.decode<std::int64_t>("usedPercent"),
                                keys.decodeIfPresent<std::int64_t>("windowDurationMins"),
                                keys.decodeIfPresent<std::int64_t>("resetsAt")};
}

CodexRateLimitSnapshot JsonCoder<CodexRateLimitSnapshot>::decode(const JsonValue& json,
                                                                 const std::string& path) {
    const KeyedDecoder keys(json, path);
    return CodexRateLimitSnapshot{keys.decodeIfPresent<std::string>("limitId"),
                                  keys.decodeIfPresent<std::string>("limitName"),
                                  keys.decodeIfPresent<CodexRateLimitWindow>("primary"),
                                  keys.decodeIfPresent<CodexRateLimitWindow>("secondary")};
}

CodexRateLimitsByLimitId JsonCoder<CodexRateLimitsByLimitId>::decode(const JsonValue& json,
                                                                     const std::string& path) {
    const auto* members = json.objectValue();
    if (members == nullptr) {
        failDecoding(path, "expected an object");
    }
    CodexRateLimitsByLimitId snapshots;
    for (const auto& [key, value] : *members) {
        snapshots.insert_or_assign(key,
                                   JsonCoder<CodexRateLimitSnapshot>::decode(value, codingPath(path, key)));
    }
    return snapshots;
}

CodexRateLimitsPayload JsonCoder<CodexRateLimitsPayload>::decode(const JsonValue& json,
                                                                 const std::string& path) {
    const KeyedDecoder keys(json, path);
    return CodexRateLimitsPayload{keys.decode<CodexRateLimitSnapshot>("rateLimits"),
                                  keys.decodeIfPresent<CodexRateLimitsByLimitId>("rateLimitsByLimitId")};
}

CodexRateLimitsEnvelope JsonCoder<CodexRateLimitsEnvelope>::decode(const JsonValue& json,
                                                                   const std::string& path) {
    const KeyedDecoder keys(json, path);
    return CodexRateLimitsEnvelope{keys.decodeIfPresent<CodexRateLimitsPayload>("result"),
                                   keys.decodeIfPresent<CodexRPCError>("error")};
}

CodexDailyUsageBucket JsonCoder<CodexDailyUsageBucket>::decode(const JsonValue& json,
                                                               const std::string& path) {
    const KeyedDecoder keys(json, path);
    return CodexDailyUsageBucket{keys.decode<std::string>("startDate"), keys.decode<std::int64_t>("tokens")};
}

CodexAccountUsagePayload JsonCoder<CodexAccountUsagePayload>::decode(const JsonValue& json,
                                                                     const std::string& path) {
    const KeyedDecoder keys(json, path);
    return CodexAccountUsagePayload{
        keys.decodeIfPresent<std::vector<CodexDailyUsageBucket>>("dailyUsageBuckets")};
}

CodexAccountUsageEnvelope JsonCoder<CodexAccountUsageEnvelope>::decode(const JsonValue& json,
                                                                       const std::string& path) {
    const KeyedDecoder keys(json, path);
    return CodexAccountUsageEnvelope{keys.decodeIfPresent<CodexAccountUsagePayload>("result"),
                                     keys.decodeIfPresent<CodexRPCError>("error")};
}

} // namespace gaugewell
