#include "RecordFixtures.h"
#include "UsageDomain/RecordCoding.h"

#include <gtest/gtest.h>
#include <unordered_set>

namespace gaugewell {
namespace {

using testing::fullSample;
using testing::minimalSample;
using testing::sampleBucket;

std::vector<std::string> keysOf(const JsonValue& json) {
    std::vector<std::string> keys;
    for (const auto& [key, value] : *json.objectValue()) {
        keys.push_back(key);
    }
    return keys;
}

// Re-encodes `json` after replacing (or, with nullopt, removing) one member.
std::string withMember(const JsonValue& json, const std::string& key, std::optional<JsonValue> replacement) {
    JsonValue::Object members;
    for (const auto& member : *json.objectValue()) {
        if (member.first != key) {
            members.push_back(member);
        } else if (replacement) {
            members.emplace_back(key, *replacement);
        }
    }
    return JsonValue(std::move(members)).serialized();
}

TEST(UsageWindowSampleCoding, MinimalSampleHasOnlyTheTenRequiredKeysAndRoundTrips) {
    const auto json = encodeJson(minimalSample());
    EXPECT_EQ(keysOf(json),
              (std::vector<std::string>{"id", "connectionID", "providerBucketID", "windowKind", "observedAt",
                                        "authority", "confidence", "coverage", "freshness", "source"}));
    EXPECT_EQ(decodeJson<UsageWindowSample>(json.serialized()).value(), minimalSample());
}

TEST(UsageWindowSampleCoding, FullSampleWritesEveryKeyInFieldOrderAndRoundTrips) {
    const auto json = encodeJson(fullSample());
    EXPECT_EQ(keysOf(json), (std::vector<std::string>{"id",
                                                      "connectionID",
                                                      "providerBucketID",
                                                      "providerBucketName",
                                                      "windowKind",
                                                      "modelID",
                                                      "observedAt",
                                                      "providerFetchedAt",
                                                      "durationSeconds",
                                                      "windowStart",
                                                      "windowEnd",
                                                      "resetAt",
                                                      "usedFraction",
                                                      "remainingFraction",
                                                      "absoluteUsed",
                                                      "absoluteLimit",
                                                      "unit",
                                                      "authority",
                                                      "confidence",
                                                      "coverage",
                                                      "freshness",
                                                      "source",
                                                      "sourceVersion"}));
    EXPECT_EQ(*json.find("usedFraction")->numberLiteralText(), "0.415");
    EXPECT_EQ(*json.find("connectionID")->stringValue(), "A115A6E0-337E-4F26-9809-6B2E75C39D01");
    EXPECT_EQ(
        json.find("source")->serialized(),
        R"({"id":"codex.appServer.experimental","displayName":"Codex app-server","isDocumented":false})");
    EXPECT_EQ(decodeJson<UsageWindowSample>(json.serialized()).value(), fullSample());
}

TEST(UsageWindowSampleCoding, UsedFractionAloneStaysAlone) {
    const auto sample = fullSample();
    const auto json = encodeJson(sample);
    const auto decoded =
        decodeJson<UsageWindowSample>(withMember(json, "remainingFraction", std::nullopt)).value();
    EXPECT_EQ(decoded.usedFraction(), sample.usedFraction());
    EXPECT_FALSE(decoded.remainingFraction().has_value());
}

TEST(UsageWindowSampleCoding, NullOptionalIsAbsentAndUnknownKeysAreIgnored) {
    auto json = encodeJson(minimalSample());
    auto text = withMember(json, "resetAt", JsonValue());
    text =
        withMember(*parseJson(text), "someFutureField", JsonValue(JsonValue::Object{{"x", JsonValue(1.0)}}));
    const auto decoded = decodeJson<UsageWindowSample>(text);
    ASSERT_TRUE(decoded.hasValue()) << decoded.error().text();
    EXPECT_EQ(decoded.value(), minimalSample());
}

TEST(UsageWindowSampleCoding, EnumerationTextMustMatchExactly) {
    const auto json = encodeJson(minimalSample());
    const auto wrongCase =
        decodeJson<UsageWindowSample>(withMember(json, "windowKind", JsonValue("FiveHour")));
    ASSERT_FALSE(wrongCase.hasValue());
    EXPECT_EQ(wrongCase.error().path, "windowKind");
    EXPECT_TRUE(
        decodeJson<UsageWindowSample>(withMember(json, "windowKind", JsonValue("custom"))).hasValue());
}

struct BrokenMember {
    std::string key;
    std::optional<JsonValue> replacement; // nullopt removes the key
    std::string expectedPath;
};

void PrintTo(const BrokenMember& broken, std::ostream* out) {
    *out << broken.key;
}

class UsageWindowSampleRejection : public ::testing::TestWithParam<BrokenMember> {};

TEST_P(UsageWindowSampleRejection, FailsTheWholeDecodeAndNamesThePath) {
    const auto& broken = GetParam();
    const auto result =
        decodeJson<UsageWindowSample>(withMember(encodeJson(fullSample()), broken.key, broken.replacement));
    ASSERT_FALSE(result.hasValue());
    EXPECT_EQ(result.error().path, broken.expectedPath);
}

INSTANTIATE_TEST_SUITE_P(
    BrokenMembers, UsageWindowSampleRejection,
    ::testing::Values(BrokenMember{"id", std::nullopt, "id"},
                      BrokenMember{"observedAt", std::nullopt, "observedAt"},
                      BrokenMember{"source", std::nullopt, "source"}, BrokenMember{"id", JsonValue(), "id"},
                      BrokenMember{"id", JsonValue::number(std::int64_t{3}), "id"},
                      BrokenMember{"connectionID", JsonValue("not-a-uuid"), "connectionID"},
                      BrokenMember{"durationSeconds", JsonValue::numberLiteral("42.5"), "durationSeconds"},
                      BrokenMember{"durationSeconds", JsonValue("18000"), "durationSeconds"},
                      BrokenMember{"usedFraction", JsonValue("0.4"), "usedFraction"},
                      BrokenMember{"observedAt", JsonValue("2026-11-22T10:00:00Z"), "observedAt"},
                      BrokenMember{"unit", JsonValue("dollars"), "unit"},
                      BrokenMember{"source", JsonValue(JsonValue::Object{{"id", JsonValue("x")}}),
                                   "source.displayName"},
                      BrokenMember{"source", JsonValue(JsonValue::Array{}), "source"}));

TEST(UsageWindowSampleCoding, NonObjectRootAndMalformedTextFail) {
    EXPECT_FALSE(decodeJson<UsageWindowSample>("[]").hasValue());
    EXPECT_FALSE(decodeJson<UsageWindowSample>("{").hasValue());
}

TEST(UsageWindowSampleEquality, EveryFieldCounts) {
    EXPECT_EQ(fullSample(), fullSample());
    EXPECT_EQ(fullSample().hashValue(), fullSample().hashValue());
    const auto later = minimalSample(testing::referencePlus(800'000'001));
    EXPECT_NE(minimalSample(), later);
    EXPECT_NE(minimalSample().hashValue(), later.hashValue());
}

TEST(UsageWindowSampleEquality, DecimalsCompareByValue) {
    const auto json = encodeJson(fullSample());
    const auto padded =
        decodeJson<UsageWindowSample>(withMember(json, "usedFraction", JsonValue::numberLiteral("0.4150")));
    EXPECT_EQ(padded.value(), fullSample());
    EXPECT_EQ(padded.value().hashValue(), fullSample().hashValue());
    std::unordered_set<UsageWindowSample> set{fullSample(), padded.value(), minimalSample()};
    EXPECT_EQ(set.size(), 2u);
}

TEST(TokenUsageBucketCoding, AbsentTotalStaysAbsent) {
    const auto bucket = sampleBucket(std::nullopt);
    EXPECT_EQ(bucket.inputTokens(), 1200);
    EXPECT_FALSE(bucket.totalTokens().has_value());
    const auto json = encodeJson(bucket);
    EXPECT_EQ(json.find("totalTokens"), nullptr);
    const auto decoded = decodeJson<TokenUsageBucket>(json.serialized()).value();
    EXPECT_EQ(decoded, bucket);
    EXPECT_FALSE(decoded.totalTokens().has_value());
}

TEST(TokenUsageBucketCoding, WritesKeysInFieldOrder) {
    const auto json = encodeJson(sampleBucket(1500));
    EXPECT_EQ(keysOf(json), (std::vector<std::string>{"id", "connectionID", "intervalStart", "intervalEnd",
                                                      "calendarIdentifier", "timeZoneIdentifier",
                                                      "inputTokens", "outputTokens", "totalTokens",
                                                      "authority", "confidence", "coverage", "source"}));
    EXPECT_NE(sampleBucket(1500), sampleBucket(1501));
}

TEST(TokenUsageBucketCoding, RejectsFractionalTokenCounts) {
    const auto json = encodeJson(sampleBucket(1500));
    EXPECT_FALSE(
        decodeJson<TokenUsageBucket>(withMember(json, "inputTokens", JsonValue::numberLiteral("1.5")))
            .hasValue());
    EXPECT_TRUE(
        decodeJson<TokenUsageBucket>(withMember(json, "inputTokens", JsonValue::numberLiteral("1.5e3")))
            .hasValue());
}

template <class E> void expectRawValuesRoundTrip() {
    for (const E value : allCases<E>()) {
        EXPECT_EQ(fromRawValue<E>(rawValue(value)), value);
        std::string upper(rawValue(value));
        upper[0] = static_cast<char>(std::toupper(upper[0]));
        EXPECT_FALSE(fromRawValue<E>(upper).has_value()) << upper;
    }
    EXPECT_FALSE(fromRawValue<E>("").has_value());
}

TEST(UsageEnumerations, RawTextIsTheCaseNameBothWays) {
    expectRawValuesRoundTrip<UsageWindowKind>();
    expectRawValuesRoundTrip<UsageUnit>();
    expectRawValuesRoundTrip<MeasurementAuthority>();
    expectRawValuesRoundTrip<MeasurementConfidence>();
    expectRawValuesRoundTrip<MeasurementCoverage>();
    expectRawValuesRoundTrip<MeasurementFreshness>();
    expectRawValuesRoundTrip<ProviderAvailability>();
    expectRawValuesRoundTrip<DiagnosticSeverity>();
    EXPECT_EQ(fromRawValue<UsageWindowKind>("unknown"), UsageWindowKind::unknown);
    EXPECT_EQ(rawValue(MeasurementCoverage::processSession), "processSession");
    EXPECT_EQ(rawValue(ProviderAvailability::availableWithLimitations), "availableWithLimitations");
}

} // namespace
} // namespace gaugewell
