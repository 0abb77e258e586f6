#include "GaugewellUI/Diagnostics/SanitizedProviderDiagnostics.h"
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

TEST(SanitizedProviderDiagnostics, ProvidersAreSortedByNameWithCodesSortedButNeverMessages) {
    EXPECT_EQ(report({}), header);
    // Names are flattened; of versions only the numbers are shown.
    auto codex = provider("Codex", {"/home/user/.codex/bin/codex", "codex-cli 0.46.0", "  1.2.3-rc.1\n"},
                          {ProviderDiagnostic(DiagnosticSeverity::warning, "codex.no_usage_windows",
                                              "secret-looking message /home/user"),
                           ProviderDiagnostic(DiagnosticSeverity::info, "a.code\nsecond line", "m")});
    codex.connectionStatus = ProviderConnectionStatus::failed;
    codex.availability = ProviderAvailability::temporarilyUnavailable;
    EXPECT_EQ(report({codex, provider(" Claude\r\n")}), header + "\n[Claude]\n"
                                                                 "Connection: signedIn\n"
                                                                 "Availability: availableWithLimitations\n"
                                                                 "Source version: unavailable\n"
                                                                 "Diagnostics: none\n"
                                                                 "\n[Codex]\n"
                                                                 "Connection: failed\n"
                                                                 "Availability: temporarilyUnavailable\n"
                                                                 "Source version: 0.46.0, 1.2.3-rc.1\n"
                                                                 "Diagnostics:\n"
                                                                 "- info: a.code second line\n"
                                                                 "- warning: codex.no_usage_windows\n");
}

TEST(SanitizedProviderDiagnostics, FlatteningGivesOneTrimmedLineOfAtMost160Characters) {
    const std::pair<std::string, std::string> cases[] = {
        {"a\r\nb\nc\rd", "a  b c d"},
        {" \t\u00a0 x y \n\u2028", "x y"}, // surrounding white space goes
        {std::string(159, 'a') + "e\u0301z", std::string(159, 'a') + "e\u0301"}, // characters, marks and all
        {"ok\xff", "ok\uFFFD"},
    };
    for (const auto& [input, expected] : cases) {
        EXPECT_EQ(SanitizedProviderDiagnostics::flattened(input), expected);
    }
}

TEST(SanitizedProviderDiagnostics, OnlyTheVersionNumberOfAToolsVersionTextIsReported) {
    const std::pair<std::string, std::optional<std::string>> cases[] = {
        {"codex-cli 0.169.0", "0.169.0"},
        {"codex-cli 0.170.0-alpha.2\nextra output", "0.170.0-alpha.2"},
        {"v1.2 (build 7)", "1.2"},
        {"0.46", "0.46"},
        {"/home/user/.codex/bin/codex", std::nullopt},
        {"user@example.com", std::nullopt},
        {"release 7", std::nullopt},
        {"x1.2.3", std::nullopt},
        {"1." + std::string(50, '1'), std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& [text, number] : cases) {
        EXPECT_EQ(SanitizedProviderDiagnostics::versionNumber(text), number)
            << ::testing::PrintToString(text);
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
    auto state = testing::viewState(ProviderService::codex, {windowWith("0.46.0"), windowWith(std::nullopt),
                                                             windowWith("0.46.0"), windowWith("0.9.0")});
    state.availability = ProviderAvailability::temporarilyUnavailable;
    state.tokenBuckets = {versionedBucket, bucket};
    state.diagnostics = {ProviderDiagnostic(DiagnosticSeverity::error, "codex.protocol_error", "m")};
    const auto sanitized = SanitizedProviderDiagnostics::from(state, ProviderConnectionStatus::signedIn);
    EXPECT_EQ(sanitized, (SanitizedProviderDiagnostics{"Codex",
                                                       ProviderConnectionStatus::signedIn,
                                                       ProviderAvailability::temporarilyUnavailable,
                                                       {"0.10.0", "0.46.0", "0.9.0"},
                                                       state.diagnostics}));
}

TEST(SanitizedProviderDiagnostics, GenerationTimeIsUtcWholeSeconds) {
    EXPECT_EQ(iso8601Text(dateFromUnixSeconds(-0.5)), "1969-12-31T23:59:59Z");
}

} // namespace
} // namespace gaugewell
