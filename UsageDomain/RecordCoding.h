#pragma once

#include "JsonCoding.h"
#include "ProviderCapabilities.h"
#include "ProviderDescriptor.h"
#include "ProviderDiagnostic.h"
#include "ProviderProbeResult.h"
#include "SourceDescriptor.h"
#include "TokenUsageBucket.h"
#include "UsageWindowSample.h"

// Keyed JSON forms of the usage and provider records: keys are the field names, in field order.
namespace gaugewell {

template <> struct JsonCoder<SourceDescriptor> {
    static JsonValue encode(const SourceDescriptor& value);
    static SourceDescriptor decode(const JsonValue& json, const std::string& path);
};

template <> struct JsonCoder<UsageWindowSample> {
    static JsonValue encode(const UsageWindowSample& value);
    static UsageWindowSample decode(const JsonValue& json, const std::string& path);
};

template <> struct JsonCoder<TokenUsageBucket> {
    static JsonValue encode(const TokenUsageBucket& value);
    static TokenUsageBucket decode(const JsonValue& json, const std::string& path);
};

template <> struct JsonCoder<ProviderDescriptor> {
    static JsonValue encode(const ProviderDescriptor& value);
    static ProviderDescriptor decode(const JsonValue& json, const std::string& path);
};

// A single unsigned number, the raw value.
template <> struct JsonCoder<ProviderCapabilities> {
    static JsonValue encode(ProviderCapabilities value);
    static ProviderCapabilities decode(const JsonValue& json, const std::string& path);
};

template <> struct JsonCoder<ProviderDiagnostic> {
    static JsonValue encode(const ProviderDiagnostic& value);
    static ProviderDiagnostic decode(const JsonValue& json, const std::string& path);
};

template <> struct JsonCoder<ProviderProbeResult> {
    static JsonValue encode(const ProviderProbeResult& value);
    static ProviderProbeResult decode(const JsonValue& json, const std::string& path);
};

} // namespace gaugewell
