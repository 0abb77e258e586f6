#include "CodexProvider/CodexPayloadNormalizer.h"
#include "RecordFixtures.h"

#include <gtest/gtest.h>

namespace gaugewell {
namespace {

using testing::fixedConnectionID;

const Date observedAt = dateFromUnixSeconds(1'795'000'000.75);
const std::string connection = "A115A6E0-337E-4F26-9809-6B2E75C39D01";
const std::optional<std::string> version = "codex-cli 0.169.0";
const std::string emptyUsage = R"({"id":3,"result":{"dailyUsageBuckets":[]}})";

std::string rateLimitsWith(const std::string& result) {
    return R"({"id":2,"result":)" + result + "}";
}

// A single snapshot under "rateLimits" whose primary window has these members.
std::string primaryWindow(const std::string& members) {
    return rateLimitsWith(R"({"rateLimits":{"limitId":"codex","primary":{)" + members + "}}}");
}

ProviderCollectionResult normalized(const std::string& rateLimits,
                                    const std::optional<std::string>& usage = emptyUsage) {
    auto result =
        CodexPayloadNormalizer::normalize(rateLimits, usage, fixedConnectionID(), observedAt, version);
    EXPECT_TRUE(result.hasValue());
    if (!result) {
        return ProviderCollectionResult(ProviderDescriptor("none", "none", std::nullopt), observedAt, {}, {},
                                        {});
    }
    return std::move(result).value();
}

std::vector<std::string> codes(const ProviderCollectionResult& result) {
    std::vector<std::string> codes;
    for (const auto& diagnostic : result.diagnostics()) {
        codes.push_back(diagnostic.code());
    }
    return codes;
}

std::vector<std::string> bucketIDs(const ProviderCollectionResult& result) {
    std::vector<std::string> ids;
    for (const auto& window : result.windows()) {
        ids.push_back(window.providerBucketID());
    }
    return ids;
}

TEST(CodexPayloadNormalizer, FullWindowBecomesAnExactSample) {
    const auto result = normalized(rateLimitsWith(
        R"({"rateLimits":{"limitId":"codex","limitName":"Codex","primary":{"usedPercent":100,"windowDurationMins":300,"resetsAt":60},"unknown":1},"extra":[1]})"));
    const UsageWindowSample expected(
        connection + ":codex.primary:1795000000", fixedConnectionID(), "codex.primary", "Codex",
        UsageWindowKind::fiveHour, std::nullopt, observedAt, std::nullopt, 18'000, std::nullopt, std::nullopt,
        dateFromUnixSeconds(60), Decimal(1), std::nullopt, std::nullopt, std::nullopt, std::nullopt,
        MeasurementAuthority::vendorAuthoritative, MeasurementConfidence::exact, MeasurementCoverage::account,
        MeasurementFreshness::live, testing::testSource(), version);
    EXPECT_EQ(result.windows(), std::vector<UsageWindowSample>{expected});
    EXPECT_EQ(result.provider(), ProviderDescriptor("app.gaugewell.codex.subscription", "Codex",
                                                    "Uses Codex's experimental local app-server protocol."));
    EXPECT_EQ(result.collectedAt(), observedAt);
    EXPECT_TRUE(result.diagnostics().empty());
}

TEST(CodexPayloadNormalizer, PercentBecomesAnExactFraction) {
    for (const auto& [percent, fraction] : std::vector<std::pair<std::string, std::string>>{
             {"42", "0.42"}, {"4.2e1", "0.42"}, {"0", "0"}, {"100", "1"}, {"99", "0.99"}}) {
        const auto result = normalized(primaryWindow(R"("usedPercent":)" + percent));
        ASSERT_EQ(result.windows().size(), 1u) << percent;
        EXPECT_EQ(result.windows()[0].usedFraction()->text(), fraction) << percent;
        EXPECT_EQ(result.windows()[0].usedFraction(), Decimal::parse(fraction)) << percent;
    }
}

TEST(CodexPayloadNormalizer, IdentifierUsesWholeSecondsTowardZero) {
    for (const auto& [seconds, suffix] :
         std::vector<std::pair<double, std::string>>{{0.999, ":0"}, {-1.5, ":-1"}}) {
        auto result =
            CodexPayloadNormalizer::normalize(primaryWindow(R"("usedPercent":1)"), emptyUsage,
                                              fixedConnectionID(), dateFromUnixSeconds(seconds), {});
        ASSERT_TRUE(result.hasValue());
        EXPECT_EQ(result->windows().at(0).id(), connection + ":codex.primary" + suffix);
        EXPECT_FALSE(result->windows().at(0).sourceVersion());
    }
}

TEST(CodexPayloadNormalizer, KindFromRawMinutesDurationWithinAYearResetOnlyWhenPositive) {
    using enum UsageWindowKind;
    struct Case {
        std::string members;
        UsageWindowKind kind;
        std::optional<std::int64_t> durationSeconds;
        std::optional<Date> reset;
    };
    for (const auto& [members, kind, durationSeconds, reset] :
         std::vector<Case>{{"", unknown, std::nullopt, std::nullopt},
                           {R"(,"windowDurationMins":300)", fiveHour, 18'000, std::nullopt},
                           {R"(,"windowDurationMins":10080)", sevenDay, 604'800, std::nullopt},
                           {R"(,"windowDurationMins":1)", custom, 60, std::nullopt},
                           {R"(,"windowDurationMins":525600)", custom, 31'536'000, std::nullopt},
                           {R"(,"windowDurationMins":525601)", custom, std::nullopt, std::nullopt},
                           {R"(,"windowDurationMins":0)", custom, std::nullopt, std::nullopt},
                           {R"(,"resetsAt":0)", unknown, std::nullopt, std::nullopt},
                           {R"(,"resetsAt":1)", unknown, std::nullopt, dateFromUnixSeconds(1)}}) {
        SCOPED_TRACE(members);
        const auto result = normalized(primaryWindow(R"("usedPercent":5)" + members));
        ASSERT_EQ(result.windows().size(), 1u);
        EXPECT_EQ(result.windows()[0].windowKind(), kind);
        EXPECT_EQ(result.windows()[0].durationSeconds(), durationSeconds);
        EXPECT_EQ(result.windows()[0].resetAt(), reset);
    }
}

TEST(CodexPayloadNormalizer, PercentOutOfRangeDropsTheWindowWithAWarning) {
    const auto result = normalized(rateLimitsWith(
        R"({"rateLimits":{"limitId":"codex","primary":{"usedPercent":101},"secondary":{"usedPercent":-1}}})"));
    EXPECT_TRUE(result.windows().empty());
    EXPECT_EQ(codes(result),
              (std::vector<std::string>{"codex.invalid_used_percent", "codex.invalid_used_percent",
                                        "codex.no_usage_windows"}));
    EXPECT_EQ(result.diagnostics()[0].severity(), DiagnosticSeverity::warning);
    EXPECT_EQ(result.diagnostics()[2].severity(), DiagnosticSeverity::error);
    EXPECT_TRUE(result.hasErrorDiagnostic());
}

TEST(CodexPayloadNormalizer, LimitsByIdAreSortedAndReplaceTheSingleSnapshot) {
    const auto result = normalized(rateLimitsWith(R"({
        "rateLimits":{"limitId":"ignored","primary":{"usedPercent":1}},
        "rateLimitsByLimitId":{
            "codex_other":{"limitId":"codex_other","limitName":"Other","primary":{"usedPercent":10},"secondary":{"usedPercent":20}},
            "codex":{"limitId":"codex","primary":{"usedPercent":30},"secondary":{"usedPercent":40,"windowDurationMins":10080}},
            "Zed":{"secondary":{"usedPercent":50}}}})"));
    EXPECT_EQ(bucketIDs(result),
              (std::vector<std::string>{"Zed.secondary", "codex.primary", "codex.secondary",
                                        "codex_other.primary", "codex_other.secondary"}));
    EXPECT_EQ(result.windows()[3].providerBucketName(), "Other");
    EXPECT_EQ(result.windows()[2].windowKind(), UsageWindowKind::sevenDay);
}

TEST(CodexPayloadNormalizer, BucketIdentifierFallsBack) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {R"({"rateLimits":{"primary":{"usedPercent":1}}})", "default.primary"},
        {R"({"rateLimits":{"limitId":"codex","primary":{"usedPercent":1}},"rateLimitsByLimitId":{}})",
         "codex.primary"},
        {R"({"rateLimits":{},"rateLimitsByLimitId":{"k":{"limitId":"   ","primary":{"usedPercent":1}}}})",
         "k.primary"},
        {R"({"rateLimits":{},"rateLimitsByLimitId":{"k":{"limitId":" x ","primary":{"usedPercent":1}}}})",
         " x .primary"},
        {R"({"rateLimits":{"limitId":"   ","primary":{"usedPercent":1}}})", "   .primary"}};
    for (const auto& [payload, bucketID] : cases) {
        EXPECT_EQ(bucketIDs(normalized(rateLimitsWith(payload))), std::vector<std::string>{bucketID})
            << payload;
    }
}

TEST(CodexPayloadNormalizer, EqualLimitIdsAreNotDeduplicated) {
    const auto result = normalized(rateLimitsWith(
        R"({"rateLimits":{},"rateLimitsByLimitId":{"a":{"limitId":"same","primary":{"usedPercent":1}},"b":{"limitId":"same","primary":{"usedPercent":2}}}})"));
    ASSERT_EQ(result.windows().size(), 2u);
    EXPECT_EQ(result.windows()[0].id(), result.windows()[1].id());
}

TEST(CodexPayloadNormalizer, RateLimitLineThatDoesNotDecodeIsADecodeError) {
    // What each record requires; the number and type rules themselves are JsonCoding's.
    for (const std::string& line : {
             primaryWindow(R"("usedPercent":null)"),
             rateLimitsWith(R"({"rateLimitsByLimitId":{}})"),
             rateLimitsWith(R"({"rateLimits":{"limitId":7}})"),
             rateLimitsWith(R"({"rateLimits":{},"rateLimitsByLimitId":{"k":3}})"),
             rateLimitsWith(R"([])"),
             std::string(R"({"id":2,"result":{"rateLimits":{}})"),
             std::string(R"({"id":2,"error":{"message":"no code"}})"),
         }) {
        const auto result =
            CodexPayloadNormalizer::normalize(line, emptyUsage, fixedConnectionID(), observedAt, {});
        ASSERT_FALSE(result.hasValue()) << line;
        EXPECT_TRUE(std::holds_alternative<DecodeError>(result.error())) << line;
    }
}

TEST(CodexPayloadNormalizer, ErrorOrMissingResultIsAProtocolError) {
    for (const std::string_view line :
         {R"({"id":2,"error":{"code":-32600,"message":"sign in"}})", R"({"id":2})",
          R"({"id":2,"result":{"rateLimits":{}},"error":{"code":1}})"}) {
        const auto result =
            CodexPayloadNormalizer::normalize(line, emptyUsage, fixedConnectionID(), observedAt, {});
        ASSERT_FALSE(result.hasValue()) << line;
        ASSERT_TRUE(std::holds_alternative<CodexProviderError>(result.error())) << line;
        EXPECT_EQ(std::get<CodexProviderError>(result.error()).kind, CodexProviderError::Kind::protocolError);
    }
}

TEST(CodexPayloadNormalizer, AccountUsageProblemsAreWarningsAndWindowsStay) {
    const std::vector<std::string> unavailable{"codex.account_usage_unavailable"};
    const std::vector<std::string> schema{"codex.account_usage_schema"};
    const std::vector<std::pair<std::optional<std::string>, std::vector<std::string>>> cases{
        {std::nullopt, unavailable},
        {R"({"id":3,"error":{"code":-32601,"message":"Method not found"}})", unavailable},
        {R"({"id":3})", unavailable},
        {"{", schema},
        {R"({"id":3,"result":{"dailyUsageBuckets":[{"startDate":"2026-03-01"}]}})", schema},
        {R"({"id":3,"result":{}})", {}}};
    for (const auto& [usage, expected] : cases) {
        SCOPED_TRACE(usage.value_or("absent"));
        const auto result = normalized(primaryWindow(R"("usedPercent":5)"), usage);
        EXPECT_EQ(result.windows().size(), 1u);
        EXPECT_TRUE(result.tokenBuckets().empty());
        EXPECT_EQ(codes(result), expected);
        for (const auto& diagnostic : result.diagnostics()) {
            EXPECT_EQ(diagnostic.severity(), DiagnosticSeverity::warning);
        }
    }
}

TEST(CodexPayloadNormalizer, BucketsBecomeUtcDaysInOrderReceived) {
    const auto result =
        normalized(primaryWindow(R"("usedPercent":5)"), R"({"id":3,"result":{"dailyUsageBuckets":[
        {"startDate":"2026-03-01","tokens":0},
        {"startDate":"2026-02-30","tokens":5},
        {"startDate":"2024-02-29","tokens":7},
        {"startDate":"2026-03-02","tokens":-1},
        {"startDate":"2026-03-01","tokens":9}]}})");
    EXPECT_EQ(codes(result),
              (std::vector<std::string>{"codex.invalid_history_bucket", "codex.invalid_history_bucket"}));
    ASSERT_EQ(result.tokenBuckets().size(), 3u);
    const TokenUsageBucket first(connection + ":codex.account:2026-03-01", fixedConnectionID(),
                                 dateFromUnixSeconds(1'772'323'200), // 2026-03-01T00:00:00Z
                                 dateFromUnixSeconds(1'772'409'600), "gregorian", "UTC", std::nullopt,
                                 std::nullopt, std::nullopt, std::nullopt, std::nullopt, 0,
                                 MeasurementAuthority::vendorAuthoritative, MeasurementConfidence::exact,
                                 MeasurementCoverage::account, testing::testSource(), version);
    EXPECT_EQ(result.tokenBuckets()[0], first);
    EXPECT_EQ(result.tokenBuckets()[1].intervalStart(), dateFromUnixSeconds(1'709'164'800)); // 2024-02-29
    EXPECT_EQ(result.tokenBuckets()[2].id(), first.id());
    EXPECT_EQ(result.tokenBuckets()[2].totalTokens(), 9);
}

TEST(CodexPayloadNormalizer, DiagnosticsKeepTheirOrder) {
    const auto result =
        normalized(rateLimitsWith(R"({"rateLimits":{"limitId":"codex","primary":{"usedPercent":101}}})"),
                   R"({"id":3,"result":{"dailyUsageBuckets":[{"startDate":"bad","tokens":1}]}})");
    EXPECT_EQ(codes(result), (std::vector<std::string>{"codex.invalid_used_percent", "codex.no_usage_windows",
                                                       "codex.invalid_history_bucket"}));
}

TEST(CodexPayloadNormalizer, DaysMustBeRealAndInTheStrictForm) {
    for (const auto& [text, unixSeconds] : std::vector<std::pair<std::string, double>>{
             {"1970-01-01", 0}, {"2000-02-29", 951'782'400}, {"2023-12-31", 1'703'980'800}}) {
        EXPECT_EQ(CodexPayloadNormalizer::parseDay(text), dateFromUnixSeconds(unixSeconds)) << text;
    }
    for (const auto* text :
         {"2023-02-29", "2026-13-01", "2026-3-01", "2026-03-01T00:00:00Z", "+026-03-01", "0000-01-01"}) {
        EXPECT_FALSE(CodexPayloadNormalizer::parseDay(text)) << text;
    }
}

} // namespace
} // namespace gaugewell
