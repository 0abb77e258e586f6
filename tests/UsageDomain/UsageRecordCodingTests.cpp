#include "RecordFixtures.h"
#include "UsageDomain/RecordCoding.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace gaugewell {
namespace {

using ::testing::ElementsAre;
using testing::fullSample;
using ::testing::Key;
using testing::minimalSample;
using testing::sampleBucket;

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

TEST(UsageWindowSampleCoding, AbsentOptionalsAreLeftOutAndBothFormsRoundTrip) {
    const auto minimal = encodeJson(minimalSample());
    EXPECT_THAT(*minimal.objectValue(),
                ElementsAre(Key("id"), Key("connectionID"), Key("providerBucketID"), Key("windowKind"),
                            Key("observedAt"), Key("authority"), Key("confidence"), Key("coverage"),
                            Key("freshness"), Key("source")));
    EXPECT_EQ(decodeJson<UsageWindowSample>(minimal.serialized()).value(), minimalSample());

    const auto full = encodeJson(fullSample());
    EXPECT_EQ(full.objectValue()->size(), 23u);
    EXPECT_EQ(*full.find("usedFraction")->numberLiteralText(), "0.415");
    EXPECT_EQ(*full.find("connectionID")->stringValue(), "A115A6E0-337E-4F26-9809-6B2E75C39D01");
    EXPECT_EQ(
        full.find("source")->serialized(),
        R"({"id":"codex.appServer.experimental","displayName":"Codex app-server","isDocumented":false})");
    EXPECT_EQ(decodeJson<UsageWindowSample>(full.serialized()).value(), fullSample());
}

TEST(UsageWindowSampleCoding, NullOptionalIsAbsentAndUnknownKeysAreIgnored) {
    auto text = withMember(encodeJson(minimalSample()), "resetAt", JsonValue());
    text = withMember(parseJson(text).value(), "someFutureField",
                      JsonValue(JsonValue::Object{{"x", JsonValue(true)}}));
    EXPECT_EQ(decodeJson<UsageWindowSample>(text).value(), minimalSample());
}

TEST(UsageWindowSampleCoding, ABrokenMemberFailsTheWholeDecodeAndNamesItsPath) {
    const struct {
        std::string key;
        std::optional<JsonValue> replacement; // nullopt removes the key
        std::string expectedPath;
    } cases[] = {
        {"id", std::nullopt, "id"},
        {"id", JsonValue(), "id"},
        {"connectionID", JsonValue("not-a-uuid"), "connectionID"},
        {"windowKind", JsonValue("FiveHour"), "windowKind"},
        {"durationSeconds", JsonValue::numberLiteral("42.5"), "durationSeconds"},
        {"usedFraction", JsonValue("0.4"), "usedFraction"},
        {"observedAt", JsonValue("2026-11-22T10:00:00Z"), "observedAt"},
        {"source", JsonValue(JsonValue::Object{{"id", JsonValue("x")}}), "source.displayName"},
    };
    const auto json = encodeJson(fullSample());
    for (const auto& [key, replacement, expectedPath] : cases) {
        const auto result = decodeJson<UsageWindowSample>(withMember(json, key, replacement));
        ASSERT_FALSE(result) << key;
        EXPECT_EQ(result.error().path, expectedPath);
    }
}

TEST(TokenUsageBucketCoding, AbsentTotalStaysAbsentAndKeysKeepFieldOrder) {
    const auto json = encodeJson(sampleBucket(std::nullopt));
    EXPECT_EQ(json.find("totalTokens"), nullptr);
    EXPECT_EQ(decodeJson<TokenUsageBucket>(json.serialized()).value(), sampleBucket(std::nullopt));
    EXPECT_THAT(*encodeJson(sampleBucket(1500)).objectValue(),
                ElementsAre(Key("id"), Key("connectionID"), Key("intervalStart"), Key("intervalEnd"),
                            Key("calendarIdentifier"), Key("timeZoneIdentifier"), Key("inputTokens"),
                            Key("outputTokens"), Key("totalTokens"), Key("authority"), Key("confidence"),
                            Key("coverage"), Key("source")));
}

TEST(UsageEnumerations, RawTextIsTheCaseNameBothWaysAndExact) {
    for (const auto kind : allCases<UsageWindowKind>()) {
        EXPECT_EQ(fromRawValue<UsageWindowKind>(rawValue(kind)), kind);
    }
    EXPECT_EQ(rawValue(ProviderAvailability::availableWithLimitations), "availableWithLimitations");
    EXPECT_EQ(fromRawValue<MeasurementCoverage>("ProcessSession"), std::nullopt);
}

} // namespace
} // namespace gaugewell
