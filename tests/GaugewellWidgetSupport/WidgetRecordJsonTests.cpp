#include "GaugewellWidgetSupport/WidgetUsageSnapshot.h"

#include <cmath>
#include <gtest/gtest.h>

namespace gaugewell {
namespace {

WidgetDate reference(double seconds) {
    return widgetDateFromSecondsSinceReferenceDate(seconds);
}

WidgetUsageSnapshot exampleSnapshot() {
    return WidgetUsageSnapshot(
        reference(785001234.5),
        {WidgetProviderUsage(WidgetProviderService::codex, WidgetProviderState::available,
                             {WidgetWindow("primary", "Five-hour", 0.42, reference(785010000))}),
         WidgetProviderUsage(WidgetProviderService::claude, WidgetProviderState::signInRequired, {})});
}

const std::string exampleJson =
    R"({"updatedAt":785001234.5,"providers":[{"service":"codex","state":"available","windows":)"
    R"([{"id":"primary","name":"Five-hour","usedFraction":0.42,"resetAt":785010000}]},)"
    R"({"service":"claude","state":"signInRequired","windows":[]}]})";

TEST(WidgetRecordJson, SnapshotBytesAndRoundTrip) {
    EXPECT_EQ(exampleSnapshot().json(), exampleJson);
    const auto decoded = WidgetUsageSnapshot::decode(exampleJson);
    ASSERT_TRUE(decoded);
    EXPECT_EQ(*decoded, exampleSnapshot());
}

TEST(WidgetRecordJson, AbsentResetAtIsLeftOut) {
    EXPECT_EQ(WidgetWindow("seven_day", "Weekly", 1, std::nullopt).json(),
              R"({"id":"seven_day","name":"Weekly","usedFraction":1})");
}

struct NumberCase {
    std::string name;
    double usedFraction;
    double resetSeconds;
    std::string expected;
};

class WidgetNumbers : public ::testing::TestWithParam<NumberCase> {};

TEST_P(WidgetNumbers, AreClampedAndWrittenPlainly) {
    const WidgetWindow window("w", "W", GetParam().usedFraction, reference(GetParam().resetSeconds));
    EXPECT_EQ(window.json(), R"({"id":"w","name":"W",)" + GetParam().expected + "}");
}

INSTANTIATE_TEST_SUITE_P(
    Cases, WidgetNumbers,
    ::testing::Values(NumberCase{"AboveOneIsOne", 1.2, 800000000, R"("usedFraction":1,"resetAt":800000000)"},
                      NumberCase{"NegativeIsZero", -0.1, 0, R"("usedFraction":0,"resetAt":0)"},
                      NumberCase{"NegativeZeroIsZero", -0.0, 0.25, R"("usedFraction":0,"resetAt":0.25)"},
                      NumberCase{"NotANumberIsZero", std::nan(""), 1, R"("usedFraction":0,"resetAt":1)"},
                      NumberCase{"ShortestFraction", 0.7, 785001234.125,
                                 R"("usedFraction":0.7,"resetAt":785001234.125)"},
                      NumberCase{"BeforeTheReferenceDate", 0.3, -1.5, R"("usedFraction":0.3,"resetAt":-1.5)"},
                      NumberCase{"TinyShareStaysExact", 1e-7, 60, R"("usedFraction":1e-07,"resetAt":60)"}),
    [](const auto& info) { return info.param.name; });

TEST(WidgetRecordJson, StringsAreEscapedAndKeptValid) {
    const WidgetWindow window("a\"b\\c/d", "Wöchentlich\n\x01", 0.5, std::nullopt);
    EXPECT_EQ(window.json(), R"({"id":"a\"b\\c/d","name":"Wöchentlich\n\u0001","usedFraction":0.5})");
    // Bytes that are not UTF-8 cannot reach the widget as they are.
    const WidgetWindow broken("\xff", "x", 0.5, std::nullopt);
    EXPECT_EQ(broken.json(), "{\"id\":\"\xEF\xBF\xBD\",\"name\":\"x\",\"usedFraction\":0.5}");
    const WidgetUsageSnapshot snapshot(
        reference(0),
        {WidgetProviderUsage(WidgetProviderService::codex, WidgetProviderState::available, {window})});
    const auto decoded = WidgetUsageSnapshot::decode(snapshot.json());
    ASSERT_TRUE(decoded);
    EXPECT_EQ(*decoded, snapshot);
}

TEST(WidgetRecordJson, DecodingIsLenientWhereTheFormatAllows) {
    const auto decoded = WidgetUsageSnapshot::decode(R"( {"providers":[{"windows":[
        {"name":"Five-hour","id":"primary","usedFraction":1.5,"resetAt":null,"extra":[1,2]},
        {"id":"weekly","name":"Weekly","usedFraction":0,"resetAt":100}],
        "state":"unavailable","service":"claude"}],"updatedAt":7,"version":2} )");
    ASSERT_TRUE(decoded);
    EXPECT_EQ(*decoded,
              WidgetUsageSnapshot(
                  reference(7),
                  {WidgetProviderUsage(WidgetProviderService::claude, WidgetProviderState::unavailable,
                                       {WidgetWindow("primary", "Five-hour", 1, std::nullopt),
                                        WidgetWindow("weekly", "Weekly", 0, reference(100))})}));
}

struct DecodingCase {
    std::string name;
    std::string json;
    WidgetSnapshotDecodingError expected;
};

class WidgetDecodingFailures : public ::testing::TestWithParam<DecodingCase> {};

TEST_P(WidgetDecodingFailures, ReportTheDecodersError) {
    const auto decoded = WidgetUsageSnapshot::decode(GetParam().json);
    ASSERT_FALSE(decoded);
    EXPECT_EQ(decoded.error(), GetParam().expected);
}

using enum WidgetSnapshotDecodingError;

const std::string window = R"({"id":"p","name":"P","usedFraction":0.1})";

std::string withProvider(const std::string& provider) {
    return R"({"updatedAt":1,"providers":[)" + provider + "]}";
}

INSTANTIATE_TEST_SUITE_P(
    Cases, WidgetDecodingFailures,
    ::testing::Values(
        DecodingCase{"Empty", "", malformedJSON}, DecodingCase{"NotJson", "<html>", malformedJSON},
        DecodingCase{"TrailingGarbage", R"({"updatedAt":1,"providers":[]} x)", malformedJSON},
        DecodingCase{"NotUtf8", "{\"updatedAt\":1,\"providers\":[],\"x\":\"\xff\"}", malformedJSON},
        DecodingCase{"DeeplyNested", std::string(100000, '[') + std::string(100000, ']'), malformedJSON},
        DecodingCase{"TopLevelArray", "[]", wrongType},
        DecodingCase{"MissingUpdatedAt", R"({"providers":[]})", missingKey},
        DecodingCase{"MissingProviders", R"({"updatedAt":1})", missingKey},
        DecodingCase{"NullUpdatedAt", R"({"updatedAt":null,"providers":[]})", wrongType},
        DecodingCase{"DateAsText", R"({"updatedAt":"2026-01-01","providers":[]})", wrongType},
        DecodingCase{"UnknownService",
                     withProvider(R"({"service":"gemini","state":"available","windows":[]})"), unknownValue},
        DecodingCase{"ServiceIsCaseSensitive",
                     withProvider(R"({"service":"Codex","state":"available","windows":[]})"), unknownValue},
        DecodingCase{"UnknownState", withProvider(R"({"service":"codex","state":"signedOut","windows":[]})"),
                     unknownValue},
        DecodingCase{"MissingWindows", withProvider(R"({"service":"codex","state":"available"})"),
                     missingKey},
        DecodingCase{
            "WindowWithoutFraction",
            withProvider(R"({"service":"codex","state":"available","windows":[{"id":"p","name":"P"}]})"),
            missingKey},
        DecodingCase{"FractionAsText",
                     withProvider(R"({"service":"codex","state":"available","windows":[)"
                                  R"({"id":"p","name":"P","usedFraction":"0.1"}]})"),
                     wrongType},
        DecodingCase{"ResetAsBoolean",
                     withProvider(R"({"service":"codex","state":"available","windows":[)"
                                  R"({"id":"p","name":"P","usedFraction":0.1,"resetAt":true}]})"),
                     wrongType},
        DecodingCase{
            "OneBadWindowSpoilsAll",
            withProvider(R"({"service":"codex","state":"available","windows":[)" + window + R"(,7]})"),
            wrongType}),
    [](const auto& info) { return info.param.name; });

} // namespace
} // namespace gaugewell
