#include "ClaudeProvider/ClaudeUsageNormalizer.h"
#include "RecordFixtures.h"

#include <gtest/gtest.h>
#include <ostream>

namespace gaugewell {
namespace {

const Uuid claudeConnection = *Uuid::parse("a115a6e0-337e-4f26-9809-6b2e75c39d02");
const Date observed = dateFromUnixSeconds(1'795'360'000.75);

ProviderCollectionResult normalized(const std::string& body) {
    auto result = ClaudeUsageNormalizer().normalize(body, claudeConnection, observed);
    EXPECT_TRUE(result.hasValue()) << "body did not decode";
    return std::move(result).value();
}

std::vector<std::string> codes(const ProviderCollectionResult& result) {
    std::vector<std::string> values;
    for (const auto& diagnostic : result.diagnostics()) {
        values.push_back(diagnostic.code());
    }
    return values;
}

std::vector<std::string> keys(const ProviderCollectionResult& result) {
    std::vector<std::string> values;
    for (const auto& window : result.windows()) {
        values.push_back(window.providerBucketID());
    }
    return values;
}

TEST(ClaudeUsageNormalizer, FiveHourWindowWithMillisecondsAndOffset) {
    const auto result =
        normalized(R"({"five_hour":{"utilization":12.5,"resets_at":"2026-11-22T18:00:00.250+00:00"}})");
    ASSERT_EQ(result.windows().size(), 1u);
    const auto& window = result.windows()[0];
    EXPECT_EQ(window.id(), "A115A6E0-337E-4F26-9809-6B2E75C39D02:five_hour:1795360000");
    EXPECT_EQ(window.connectionID(), claudeConnection);
    EXPECT_EQ(window.providerBucketID(), "five_hour");
    EXPECT_EQ(window.providerBucketName(), "Five-hour");
    EXPECT_EQ(window.windowKind(), UsageWindowKind::fiveHour);
    EXPECT_EQ(window.durationSeconds(), 18000);
    EXPECT_EQ(window.observedAt(), observed);
    EXPECT_EQ(window.providerFetchedAt(), observed);
    EXPECT_EQ(window.resetAt(), dateFromUnixSeconds(1'795'370'400.25));
    EXPECT_EQ(window.usedFraction(), Decimal::parse("0.125"));
    EXPECT_FALSE(window.modelID() || window.windowStart() || window.windowEnd() ||
                 window.remainingFraction() || window.absoluteUsed() || window.absoluteLimit() ||
                 window.unit() || window.sourceVersion());
    EXPECT_EQ(window.authority(), MeasurementAuthority::vendorAuthoritative);
    EXPECT_EQ(window.confidence(), MeasurementConfidence::exact);
    EXPECT_EQ(window.coverage(), MeasurementCoverage::account);
    EXPECT_EQ(window.freshness(), MeasurementFreshness::live);
    EXPECT_EQ(window.source(), SourceDescriptor("claude.oauthUsage", "Claude account usage", false));
    EXPECT_TRUE(result.diagnostics().empty());
    EXPECT_TRUE(result.tokenBuckets().empty());
    EXPECT_EQ(result.provider().id(), "app.gaugewell.claude.subscription");
    EXPECT_EQ(result.collectedAt(), observed);
}

TEST(ClaudeUsageNormalizer, AllWindowsInTableOrderWithTheirRows) {
    // Keys given out of order; the result follows the table.
    const auto result =
        normalized(R"({"seven_day_cowork":{"utilization":6},"seven_day_sonnet":{"utilization":5},
        "seven_day_opus":{"utilization":4},"seven_day_oauth_apps":{"utilization":3},
        "seven_day":{"utilization":2},"five_hour":{"utilization":1},"unknown_window":{"utilization":"x"}})");
    EXPECT_EQ(keys(result),
              (std::vector<std::string>{"five_hour", "seven_day", "seven_day_oauth_apps", "seven_day_opus",
                                        "seven_day_sonnet", "seven_day_cowork"}));
    struct Row {
        std::string name;
        UsageWindowKind kind;
        std::optional<std::string> model;
        std::int64_t duration;
    };
    const std::vector<Row> rows{{"Five-hour", UsageWindowKind::fiveHour, std::nullopt, 18000},
                                {"Seven-day", UsageWindowKind::sevenDay, std::nullopt, 604800},
                                {"OAuth apps weekly", UsageWindowKind::modelSpecific, "oauth-apps", 604800},
                                {"Opus weekly", UsageWindowKind::modelSpecific, "opus", 604800},
                                {"Sonnet weekly", UsageWindowKind::modelSpecific, "sonnet", 604800},
                                {"Cowork weekly", UsageWindowKind::modelSpecific, "cowork", 604800}};
    ASSERT_EQ(result.windows().size(), rows.size());
    for (std::size_t index = 0; index < rows.size(); ++index) {
        const auto& window = result.windows()[index];
        EXPECT_EQ(window.providerBucketName(), rows[index].name);
        EXPECT_EQ(window.windowKind(), rows[index].kind);
        EXPECT_EQ(window.modelID(), rows[index].model);
        EXPECT_EQ(window.durationSeconds(), rows[index].duration);
        EXPECT_EQ(window.usedFraction(), Decimal(static_cast<std::int64_t>(index + 1)).dividedBy100());
        EXPECT_EQ(window.resetAt(), std::nullopt);
    }
}

TEST(ClaudeUsageNormalizer, OneWindowInManyShapes) {
    const std::vector<std::string> rejected{"claude.invalid_utilization", "claude.no_usage_windows"};
    const std::vector<std::string> badReset{"claude.invalid_reset"};
    const Date wholeSecondReset = dateFromUnixSeconds(1'795'370'400);
    struct Case {
        std::string window; // the JSON of "five_hour"
        std::optional<std::string> fraction;
        std::optional<Date> reset;
        std::vector<std::string> codes;
    };
    for (const auto& [window, fraction, reset, expectedCodes] : std::vector<Case>{
             {R"({"utilization":41.5})", "0.415", std::nullopt, {}},
             {R"({"utilization":33.333333333333333333})", "0.33333333333333333333", std::nullopt, {}},
             {R"({"utilization":0})", "0", std::nullopt, {}},
             {R"({"utilization":100})", "1", std::nullopt, {}},
             {R"({"utilization":1e2})", "1", std::nullopt, {}},
             {R"({"utilization":100.01})", std::nullopt, std::nullopt, rejected},
             {R"({"utilization":-1})", std::nullopt, std::nullopt, rejected},
             {R"({"utilization":null,"resets_at":"2026-11-22T18:00:00Z"})", std::nullopt, std::nullopt,
              rejected},
             {R"({})", std::nullopt, std::nullopt, rejected},
             {R"({"utilization":1,"resets_at":"2026-11-22T18:00:00Z"})", "0.01", wholeSecondReset, {}},
             {R"({"utilization":1,"resets_at":null})", "0.01", std::nullopt, {}},
             {R"({"utilization":1,"resets_at":"tomorrow morning"})", "0.01", std::nullopt, badReset},
             {R"({"utilization":1,"resets_at":"2026-11-22T18:00:00"})", "0.01", std::nullopt, badReset}}) {
        SCOPED_TRACE(window);
        const auto result = normalized(R"({"five_hour":)" + window + "}");
        EXPECT_EQ(codes(result), expectedCodes);
        if (!expectedCodes.empty()) {
            EXPECT_EQ(result.diagnostics()[0].severity(), DiagnosticSeverity::warning);
        }
        if (!fraction) {
            EXPECT_TRUE(result.windows().empty());
            continue;
        }
        ASSERT_EQ(result.windows().size(), 1u);
        EXPECT_EQ(result.windows()[0].usedFraction()->text(), *fraction);
        EXPECT_EQ(result.windows()[0].resetAt(), reset);
    }
}

TEST(ClaudeUsageNormalizer, EmptyObjectGivesTheSingleNoWindowsError) {
    const auto result = normalized("{}");
    EXPECT_TRUE(result.windows().empty());
    ASSERT_EQ(result.diagnostics().size(), 1u);
    EXPECT_EQ(result.diagnostics()[0],
              ProviderDiagnostic(
                  DiagnosticSeverity::error, "claude.no_usage_windows",
                  "Claude returned no supported usage windows; its account response may have changed."));
    EXPECT_TRUE(result.hasErrorDiagnostic());
}

TEST(ClaudeUsageNormalizer, NullWindowIsSkippedSilently) {
    const auto result = normalized(R"({"seven_day_opus":null,"seven_day":{"utilization":50}})");
    EXPECT_EQ(keys(result), (std::vector<std::string>{"seven_day"}));
    EXPECT_TRUE(result.diagnostics().empty());
}

TEST(ClaudeUsageNormalizer, RejectedWindowsWarnAndTheRestAreKept) {
    const auto result = normalized(R"({"five_hour":{"utilization":101},"seven_day":{"utilization":7,
        "resets_at":"soon"},"seven_day_sonnet":{"utilization":-0.5}})");
    EXPECT_EQ(keys(result), (std::vector<std::string>{"seven_day"}));
    EXPECT_EQ(codes(result), (std::vector<std::string>{"claude.invalid_utilization", "claude.invalid_reset",
                                                       "claude.invalid_utilization"}));
    for (const auto& diagnostic : result.diagnostics()) {
        EXPECT_EQ(diagnostic.severity(), DiagnosticSeverity::warning);
    }
    EXPECT_FALSE(result.hasErrorDiagnostic());
}

TEST(ClaudeUsageNormalizer, SampleIdsTruncateObservationSecondsTowardZero) {
    const Date beforeEpoch = dateFromUnixSeconds(-1.5);
    const auto result = ClaudeUsageNormalizer().normalize(R"({"seven_day":{"utilization":1}})",
                                                          claudeConnection, beforeEpoch);
    ASSERT_TRUE(result.hasValue());
    EXPECT_EQ(result->windows().at(0).id(), "A115A6E0-337E-4F26-9809-6B2E75C39D02:seven_day:-1");
}

class UndecodableBody : public ::testing::TestWithParam<std::string> {};

TEST_P(UndecodableBody, FailsToDecode) {
    EXPECT_FALSE(ClaudeUsageNormalizer().normalize(GetParam(), claudeConnection, observed).hasValue());
}

INSTANTIATE_TEST_SUITE_P(ClaudeUsageNormalizer, UndecodableBody,
                         ::testing::Values(R"({"five_hour":{"utilization":"41.5"}})",
                                           R"({"five_hour":{"utilization":1,"resets_at":17}})",
                                           R"({"five_hour":[]})", R"({"seven_day":"full"})", "[]", "null", "",
                                           "{\"five_hour\":", R"({"five_hour":{"utilization":1e400}})",
                                           "<html>Bad gateway</html>"));

} // namespace
} // namespace gaugewell
