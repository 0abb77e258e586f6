#include "ClaudeProvider/ClaudeUsageDiagnostics.h"
#include "ClaudeProvider/ClaudeUsageNormalizer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace gaugewell {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using ::testing::Property;

const Uuid claudeConnection = *Uuid::parse("a115a6e0-337e-4f26-9809-6b2e75c39d02");
const Date observed = dateFromUnixSeconds(1'795'360'000.75);

ProviderCollectionResult normalized(const std::string& body, Date observedAt = observed) {
    auto result = ClaudeUsageNormalizer().normalize(body, claudeConnection, observedAt);
    EXPECT_TRUE(result) << "body did not decode";
    return std::move(result).value();
}

auto bucket(const std::string& key) {
    return Property(&UsageWindowSample::providerBucketID, key);
}

TEST(ClaudeUsageNormalizer, FiveHourWindowWithMillisecondsAndOffset) {
    const auto result =
        normalized(R"({"five_hour":{"utilization":12.5,"resets_at":"2026-11-22T18:00:00.250+00:00"}})");
    const UsageWindowSample expected(
        "A115A6E0-337E-4F26-9809-6B2E75C39D02:five_hour:1795360000", claudeConnection, "five_hour",
        "Five-hour", UsageWindowKind::fiveHour, std::nullopt, observed, observed, 18000, std::nullopt,
        std::nullopt, dateFromUnixSeconds(1'795'370'400.25), Decimal::parse("0.125"), std::nullopt,
        std::nullopt, std::nullopt, std::nullopt, MeasurementAuthority::vendorAuthoritative,
        MeasurementConfidence::exact, MeasurementCoverage::account, MeasurementFreshness::live,
        SourceDescriptor("claude.oauthUsage", "Claude account usage", false), std::nullopt);
    EXPECT_THAT(result.windows(), ElementsAre(expected));
    EXPECT_THAT(result.diagnostics(), IsEmpty());
    EXPECT_THAT(result.tokenBuckets(), IsEmpty());
    EXPECT_EQ(result.provider().id(), "app.gaugewell.claude.subscription");
    EXPECT_EQ(result.collectedAt(), observed);
}

TEST(ClaudeUsageNormalizer, WindowsFollowTheTableOrder) {
    const auto result =
        normalized(R"({"seven_day_cowork":{"utilization":6},"seven_day_sonnet":{"utilization":5},
        "seven_day_opus":{"utilization":4},"seven_day_oauth_apps":{"utilization":3},
        "seven_day":{"utilization":2},"five_hour":{"utilization":1},"unknown_window":{"utilization":"x"}})");
    EXPECT_THAT(result.windows(), ElementsAre(bucket("five_hour"), bucket("seven_day"),
                                              bucket("seven_day_oauth_apps"), bucket("seven_day_opus"),
                                              bucket("seven_day_sonnet"), bucket("seven_day_cowork")));
    const auto& opus = result.windows()[3];
    EXPECT_TRUE(opus.windowKind() == UsageWindowKind::modelSpecific && opus.modelID() == "opus" &&
                opus.durationSeconds() == 604800 && opus.usedFraction() == Decimal::parse("0.04"));
}

TEST(ClaudeUsageNormalizer, OneWindowInManyShapes) {
    const auto rejected = {claudeDiagnostic(ClaudeUsageIssue::invalidUtilization),
                           claudeDiagnostic(ClaudeUsageIssue::noUsageWindows)};
    // Reset times: FiveHourWindowWithMillisecondsAndOffset, RejectedWindowsWarnAndTheRestAreKept.
    const struct {
        std::string window; // the JSON of "five_hour"
        std::optional<std::string> fraction;
        std::vector<ProviderDiagnostic> diagnostics;
    } cases[] = {
        {R"({"utilization":0})", "0", {}},
        {R"({"utilization":100})", "1", {}},
        {R"({"utilization":100.01})", std::nullopt, rejected},
        {R"({"utilization":-1})", std::nullopt, rejected},
        {R"({"utilization":null,"resets_at":"2026-11-22T18:00:00Z"})", std::nullopt, rejected},
        {"null", std::nullopt, {claudeDiagnostic(ClaudeUsageIssue::noUsageWindows)}},
    };
    for (const auto& [window, fraction, diagnostics] : cases) {
        SCOPED_TRACE(window);
        const auto result = normalized(R"({"five_hour":)" + window + "}");
        EXPECT_THAT(result.diagnostics(), ElementsAreArray(diagnostics));
        if (!fraction) {
            EXPECT_THAT(result.windows(), IsEmpty());
            continue;
        }
        ASSERT_EQ(result.windows().size(), 1u);
        EXPECT_EQ(result.windows()[0].usedFraction()->text(), *fraction);
        EXPECT_FALSE(result.windows()[0].resetAt());
    }
}

TEST(ClaudeUsageNormalizer, RejectedWindowsWarnAndTheRestAreKept) {
    const auto result = normalized(R"({"five_hour":{"utilization":101},"seven_day":{"utilization":7,
        "resets_at":"soon"},"seven_day_sonnet":{"utilization":-0.5}})");
    EXPECT_THAT(result.windows(), ElementsAre(bucket("seven_day")));
    EXPECT_THAT(result.diagnostics(), ElementsAre(claudeDiagnostic(ClaudeUsageIssue::invalidUtilization),
                                                  claudeDiagnostic(ClaudeUsageIssue::invalidReset),
                                                  claudeDiagnostic(ClaudeUsageIssue::invalidUtilization)));
    EXPECT_FALSE(result.hasErrorDiagnostic());
}

TEST(ClaudeUsageNormalizer, SampleIdsTruncateObservationSecondsTowardZero) {
    const auto result = normalized(R"({"seven_day":{"utilization":1}})", dateFromUnixSeconds(-1.5));
    EXPECT_EQ(result.windows().at(0).id(), "A115A6E0-337E-4F26-9809-6B2E75C39D02:seven_day:-1");
}

TEST(ClaudeUsageNormalizer, ValuesOfTheWrongKindFailTheWholeBody) {
    // Which JSON types fail is JsonCoding's; one wrong type and one body that is not JSON.
    for (const char* body : {R"({"five_hour":{"utilization":"41.5"}})", "<html>Bad gateway</html>"}) {
        EXPECT_FALSE(ClaudeUsageNormalizer().normalize(body, claudeConnection, observed)) << body;
    }
}

} // namespace
} // namespace gaugewell
