#pragma once

#include "UsageDomain/JsonCoding.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

// The JSON-RPC records that the Codex app-server exchange reads. Decoding is strict: a missing
// required key, a wrong JSON type or a number that is not whole fails; unknown keys are ignored.
namespace gaugewell {

// Only "code" is read; a server's message or data never leaves the decoder.
struct CodexRPCError {
    std::int64_t code;
};

// What every line of the app-server is first decoded as.
struct CodexRPCIdentifier {
    std::optional<std::int64_t> id;
    std::optional<CodexRPCError> error;
};

struct CodexRateLimitWindow {
    std::int64_t usedPercent;
    std::optional<std::int64_t> windowDurationMins;
    std::optional<std::int64_t> resetsAt; // seconds since 1970
};

struct CodexRateLimitSnapshot {
    std::optional<std::string> limitId;
    std::optional<std::string> limitName;
    std::optional<CodexRateLimitWindow> primary;
    std::optional<CodexRateLimitWindow> secondary;
};

// Keyed by limit identifier; iteration is in byte order of the keys.
using CodexRateLimitsByLimitId = std::map<std::string, CodexRateLimitSnapshot>;

struct CodexRateLimitsPayload {
    CodexRateLimitSnapshot rateLimits;
    std::optional<CodexRateLimitsByLimitId> rateLimitsByLimitId;
};

struct CodexRateLimitsEnvelope {
    std::optional<CodexRateLimitsPayload> result;
    std::optional<CodexRPCError> error;
};

struct CodexDailyUsageBucket {
    std::string startDate; // yyyy-MM-dd, UTC
    std::int64_t tokens;
};

struct CodexAccountUsagePayload {
    std::optional<std::vector<CodexDailyUsageBucket>> dailyUsageBuckets;
};

struct CodexAccountUsageEnvelope {
    std::optional<CodexAccountUsagePayload> result;
    std::optional<CodexRPCError> error;
};

template <> struct JsonCoder<CodexRPCError> {
    static CodexRPCError decode(const JsonValue& json, const std::string& path);
};

template <> struct JsonCoder<CodexRPCIdentifier> {
    static CodexRPCIdentifier decode(const JsonValue& json, const std::string& path);
};

template <> struct JsonCoder<CodexRateLimitWindow> {
    static CodexRateLimitWindow decode(const JsonValue& json, const std::string& path);
};

template <> struct JsonCoder<CodexRateLimitSnapshot> {
    static CodexRateLimitSnapshot decode(const JsonValue& json, const std::string& path);
};

// Duplicate keys: the last one wins, as for any object member.
template <> struct JsonCoder<CodexRateLimitsByLimitId> {
    static CodexRateLimitsByLimitId decode(const JsonValue& json, const std::string& path);
};

template <> struct JsonCoder<CodexRateLimitsPayload> {
    static CodexRateLimitsPayload decode(const JsonValue& json, const std::string& path);
};

template <> struct JsonCoder<CodexRateLimitsEnvelope> {
    static CodexRateLimitsEnvelope decode(const JsonValue& json, const std::string& path);
};

template <> struct JsonCoder<CodexDailyUsageBucket> {
    static CodexDailyUsageBucket decode(const JsonValue& json, const std::string& path);
};

template <> struct JsonCoder<CodexAccountUsagePayload> {
    static CodexAccountUsagePayload decode(const JsonValue& json, const std::string& path);
};

template <> struct JsonCoder<CodexAccountUsageEnvelope> {
    static CodexAccountUsageEnvelope decode(const JsonValue& json, const std::string& path);
};

} // namespace gaugewell
