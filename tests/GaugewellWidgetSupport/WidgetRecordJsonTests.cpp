#include "GaugewellWidgetSupport/WidgetUsageSnapshot.h"
#include "WidgetFeedSamples.h"

#include <cmath>
#include <gtest/gtest.h>

namespace gaugewell {
namespace {

WidgetDate reference(double seconds) {
    return widgetDateFromSecondsSinceReferenceDate(seconds);
}

TEST(WidgetRecordJson, SnapshotBytesAndRoundTrip) {
    EXPECT_EQ(testing::sampleWidgetSnapshot().json(), testing::sampleWidgetJson);
    const auto decoded = WidgetUsageSnapshot::decode(testing::sampleWidgetJson);
    ASSERT_TRUE(decoded);
    EXPECT_EQ(*decoded, testing::sampleWidgetSnapshot());
}

TEST(WidgetRecordJson, NumbersAreClampedAndWrittenPlainlyAndAnAbsentResetIsLeftOut) {
    const struct {
        double usedFraction;
        std::optional<double> resetSeconds;
        std::string expected;
    } cases[] = {
        {1, std::nullopt, R"("usedFraction":1)"},
        {1.2, 800000000, R"("usedFraction":1,"resetAt":800000000)"},
        {-0.1, 0, R"("usedFraction":0,"resetAt":0)"},
        {-0.0, 0.25, R"("usedFraction":0,"resetAt":0.25)"},
        {std::nan(""), 1, R"("usedFraction":0,"resetAt":1)"},
        {0.7, 785001234.125, R"("usedFraction":0.7,"resetAt":785001234.125)"},
        {0.3, -1.5, R"("usedFraction":0.3,"resetAt":-1.5)"}, // before the reference date
        {1e-7, 60, R"("usedFraction":1e-07,"resetAt":60)"},
    };
    for (const auto& [used, reset, expected] : cases) {
        const WidgetWindow window("w", "W", used, reset ? std::optional(reference(*reset)) : std::nullopt);
        EXPECT_EQ(window.json(), R"({"id":"w","name":"W",)" + expected + "}");
    }
}

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

TEST(WidgetRecordJson, DecodingFailuresReportTheDecodersError) {
    using enum WidgetSnapshotDecodingError;
    const auto withProvider = [](const std::string& provider) {
        return R"({"updatedAt":1,"providers":[)" + provider + "]}";
    };
    const auto withCodexWindows = [&](const std::string& windows) {
        return withProvider(R"({"service":"codex","state":"available","windows":[)" + windows + "]}");
    };
    const struct {
        const char* name;
        std::string json;
        WidgetSnapshotDecodingError expected;
    } cases[] = {
        {"Empty", "", malformedJSON},
        {"NotJson", "<html>", malformedJSON},
        {"TrailingGarbage", R"({"updatedAt":1,"providers":[]} x)", malformedJSON},
        {"NotUtf8", "{\"updatedAt\":1,\"providers\":[],\"x\":\"\xff\"}", malformedJSON},
        {"DeeplyNested", std::string(100000, '[') + std::string(100000, ']'), malformedJSON},
        {"TopLevelArray", "[]", wrongType},
        {"MissingUpdatedAt", R"({"providers":[]})", missingKey},
        {"MissingProviders", R"({"updatedAt":1})", missingKey},
        {"NullUpdatedAt", R"({"updatedAt":null,"providers":[]})", wrongType},
        {"DateAsText", R"({"updatedAt":"2026-01-01","providers":[]})", wrongType},
        {"UnknownService", withProvider(R"({"service":"gemini","state":"available","windows":[]})"),
         unknownValue},
        {"ServiceIsCaseSensitive", withProvider(R"({"service":"Codex","state":"available","windows":[]})"),
         unknownValue},
        {"UnknownState", withProvider(R"({"service":"codex","state":"signedOut","windows":[]})"),
         unknownValue},
        {"MissingWindows", withProvider(R"({"service":"codex","state":"available"})"), missingKey},
        {"WindowWithoutFraction", withCodexWindows(R"({"id":"p","name":"P"})"), missingKey},
        {"FractionAsText", withCodexWindows(R"({"id":"p","name":"P","usedFraction":"0.1"})"), wrongType},
        {"ResetAsBoolean", withCodexWindows(R"({"id":"p","name":"P","usedFraction":0.1,"resetAt":true})"),
         wrongType},
        {"OneBadWindowSpoilsAll", withCodexWindows(R"({"id":"p","name":"P","usedFraction":0.1},7)"),
         wrongType},
    };
    for (const auto& [name, json, expected] : cases) {
        SCOPED_TRACE(name);
        const auto decoded = WidgetUsageSnapshot::decode(json);
        ASSERT_FALSE(decoded);
        EXPECT_EQ(decoded.error(), expected);
    }
}

} // namespace
} // namespace gaugewell
