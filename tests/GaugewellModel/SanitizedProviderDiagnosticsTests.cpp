#include "GaugewellUI/Model/SanitizedProviderDiagnostics.h"
#include "ViewStateFixtures.h"

#include <gtest/gtest.h>

namespace gaugewell {
namespace {

const std::string header =
    "Gaugewell diagnostics\n"
    "Generated: 2026-11-16T13:45:07Z\n"
    "App: 1.4 (212)\n"
    "System: Debian GNU/Linux 12 (bookworm) (kernel 6.1.0-18-amd64)\n"
    "Privacy: no usage values, account identifiers, paths, payloads or credentials included\n";

Date generatedAt() {
    // 2026-11-16T13:45:07.750Z: fractions of a second are dropped.
    return dateFromUnixSeconds(1'794'836'707.75);
}

SanitizedProviderDiagnostics provider(std::string name, std::vector<std::string> versions = {},
                                      std::vector<ProviderDiagnostic> diagnostics = {}) {
    return SanitizedProviderDiagnostics{std::move(name), ProviderConnectionStatus::signedIn,
                                        ProviderAvailability::availableWithLimitations, std::move(versions),
                                        std::move(diagnostics)};
}

std::string report(std::vector<SanitizedProviderDiagnostics> providers) {
    return SanitizedProviderDiagnostics::report(std::move(providers), generatedAt(), "1.4", "212",
                                                "Debian GNU/Linux 12 (bookworm) (kernel 6.1.0-18-amd64)");
}

// The report lines of the single provider section, without the header.
std::string section(const SanitizedProviderDiagnostics& single) {
    const auto text = report({single});
    return text.substr(header.size());
}

TEST(SanitizedProviderDiagnostics, ProvidersAreSortedByNameWithCodesSortedButNeverMessages) {
    EXPECT_EQ(report({}), header);
    auto codex = provider("Codex", {"0.46.0"},
                          {ProviderDiagnostic(DiagnosticSeverity::warning, "codex.no_usage_windows",
                                              "secret-looking message /home/user"),
                           ProviderDiagnostic(DiagnosticSeverity::info, "a.code\nsecond line", "m")});
    codex.connectionStatus = ProviderConnectionStatus::failed;
    codex.availability = ProviderAvailability::temporarilyUnavailable;
    EXPECT_EQ(report({codex, provider("Claude")}), header + "\n[Claude]\n"
                                                            "Connection: signedIn\n"
                                                            "Availability: availableWithLimitations\n"
                                                            "Source version: unavailable\n"
                                                            "Diagnostics: none\n"
                                                            "\n[Codex]\n"
                                                            "Connection: failed\n"
                                                            "Availability: temporarilyUnavailable\n"
                                                            "Source version: 0.46.0\n"
                                                            "Diagnostics:\n"
                                                            "- info: a.code second line\n"
                                                            "- warning: codex.no_usage_windows\n");
}

TEST(SanitizedProviderDiagnostics, LongMultiLineNameIsOneCappedLine) {
    const std::string name = "Co\r\ndex" + std::string(195, 'x');
    const auto text = section(provider(name));
    const std::string expected = "[Co  dex" + std::string(160 - 7, 'x') + "]\n";
    EXPECT_EQ(text.substr(1, expected.size()), expected);
}

TEST(SanitizedProviderDiagnostics, SourceVersionsKeepOnlyVersionLikeValues) {
    const std::string eighty(80, '7');
    const std::string text = section(
        provider("Codex", {"/home/user/.codex/bin/codex", eighty, eighty + "8", "0.46.0",
                           "codex-cli 0.169.0 (beta+2)", "user@example.com", "0.46\n0", "  1.2_3\n"}));
    EXPECT_NE(text.find("Source version: " + eighty + ", 0.46.0, codex-cli 0.169.0 (beta+2), 1.2_3\n"),
              std::string::npos)
        << text;
}

TEST(SanitizedProviderDiagnostics, FlatteningGivesOneTrimmedLineOfAtMost160Characters) {
    const std::pair<std::string, std::string> cases[] = {
        {"a\r\nb\nc\rd", "a  b c d"},
        {" \t\u00a0 x y \n\u2028", "x y"}, // surrounding white space goes
        {" \r\n ", ""},
        {std::string(159, 'a') + "\u00e9\u00e9", std::string(159, 'a') + "\u00e9"}, // characters, not bytes
        {std::string(159, 'a') + "e\u0301z", std::string(159, 'a') + "e\u0301"},    // the mark stays
        {"ok\xff", "ok\uFFFD"},
    };
    for (const auto& [input, expected] : cases) {
        EXPECT_EQ(SanitizedProviderDiagnostics::flattened(input), expected);
    }
}

TEST(SanitizedProviderDiagnostics, OnlyVersionLikeStringsOfAtMost80CharactersAreReportable) {
    const std::pair<std::string, bool> cases[] = {
        {"0.46.0", true},
        {"v1.2_3 (rc+4)-x", true},
        {"\u0432\u0435\u0440\u0441\u0438\u044f \u0663", true}, // non-Latin letters and digits
        {std::string(80, 'a'), true},
        {std::string(81, 'a'), false},
        {"  " + std::string(80, 'a') + "\n", true}, // eighty after trimming
        {"", false},
        {" \n ", false},
        {"/usr/local/bin/codex", false},
        {"user@example.com", false},
        {"0.46\n0", false},
        {"codex:0.46", false},
        {"0.46\t0", false},
    };
    for (const auto& [version, reportable] : cases) {
        EXPECT_EQ(SanitizedProviderDiagnostics::isReportableSourceVersion(version), reportable)
            << ::testing::PrintToString(version);
    }
}

TEST(SanitizedProviderDiagnostics, FromViewStateTakesDistinctSortedVersionsOfWindowsAndBuckets) {
    const auto windowWith = [](std::optional<std::string> version) {
        return testing::windowSample({.sourceVersion = std::move(version)});
    };
    const auto bucket = testing::sampleBucket(10);
    const TokenUsageBucket versionedBucket(
        bucket.id(), bucket.connectionID(), bucket.intervalStart(), bucket.intervalEnd(),
        bucket.calendarIdentifier(), bucket.timeZoneIdentifier(), bucket.modelID(), bucket.inputTokens(),
        bucket.outputTokens(), bucket.cacheReadTokens(), bucket.cacheWriteTokens(), bucket.totalTokens(),
        bucket.authority(), bucket.confidence(), bucket.coverage(), bucket.source(), "0.10.0");
    const ProviderViewState state{
        ProviderService::codex,
        ProviderDescriptor("app.gaugewell.codex.subscription", "Codex", std::nullopt),
        ProviderAvailability::temporarilyUnavailable,
        {},
        {windowWith("0.46.0"), windowWith(std::nullopt), windowWith("0.46.0"), windowWith("0.9.0")},
        {versionedBucket, bucket},
        {ProviderDiagnostic(DiagnosticSeverity::error, "codex.protocol_error", "m")}};
    const auto sanitized = SanitizedProviderDiagnostics::from(state, ProviderConnectionStatus::signedIn);
    EXPECT_EQ(sanitized, (SanitizedProviderDiagnostics{"Codex",
                                                       ProviderConnectionStatus::signedIn,
                                                       ProviderAvailability::temporarilyUnavailable,
                                                       {"0.10.0", "0.46.0", "0.9.0"},
                                                       state.diagnostics}));
}

TEST(SanitizedProviderDiagnostics, GenerationTimeIsUtcWholeSeconds) {
    EXPECT_EQ(iso8601Text(dateFromUnixSeconds(0)), "1970-01-01T00:00:00Z");
    EXPECT_EQ(iso8601Text(dateFromUnixSeconds(-0.5)), "1969-12-31T23:59:59Z");
    EXPECT_EQ(iso8601Text(dateFromUnixSeconds(951'782'400)), "2000-02-29T00:00:00Z");
}

} // namespace
} // namespace gaugewell
