#include "UsageDomain/ProviderCollectionResult.h"
#include "UsageDomain/RecordCoding.h"

#include <gtest/gtest.h>

namespace gaugewell {
namespace {

using Caps = ProviderCapabilities;

TEST(ProviderCapabilities, BuiltFromFlagsHasTheirBits) {
    const Caps caps{Caps::currentWindows, Caps::resetTimes};
    EXPECT_EQ(caps.rawValue(), 3);
    EXPECT_EQ(encodeJson(caps).serialized(), "3");
    EXPECT_TRUE(Caps{}.isEmpty());
    EXPECT_EQ(Caps::apiBilling.rawValue(), 128);
}

TEST(ProviderCapabilities, SetAlgebraWorksOnTheRawValue) {
    const Caps a{Caps::currentWindows, Caps::resetTimes, Caps::credits};
    const Caps b{Caps::resetTimes, Caps::spend};
    EXPECT_EQ(a.unionWith(b), (Caps{Caps::currentWindows, Caps::resetTimes, Caps::credits, Caps::spend}));
    EXPECT_EQ(a.intersection(b), Caps::resetTimes);
    EXPECT_EQ(a.symmetricDifference(b), (Caps{Caps::currentWindows, Caps::credits, Caps::spend}));
    EXPECT_EQ(a.subtracting(b), (Caps{Caps::currentWindows, Caps::credits}));
    EXPECT_TRUE(a.contains(Caps::credits));
    EXPECT_FALSE(a.contains(b));
    EXPECT_TRUE(Caps::resetTimes.isSubset(a));
    EXPECT_TRUE(a.isSuperset(Caps::resetTimes));
    EXPECT_FALSE(b.isSubset(a));
    EXPECT_TRUE(Caps::spend.isDisjoint(a));
    EXPECT_FALSE(b.isDisjoint(a));
    EXPECT_TRUE(Caps{}.isSubset(Caps{}));
}

TEST(ProviderCapabilities, InsertAndRemoveReportWhetherTheFlagWasThere) {
    Caps caps{Caps::currentWindows};
    EXPECT_TRUE(caps.insert(Caps::resetTimes).inserted);
    const auto again = caps.insert(Caps::resetTimes);
    EXPECT_FALSE(again.inserted);
    EXPECT_EQ(again.memberAfterInsert, Caps::resetTimes);
    EXPECT_EQ(caps.rawValue(), 3);

    EXPECT_EQ(caps.remove(Caps::currentWindows), Caps::currentWindows);
    EXPECT_FALSE(caps.remove(Caps::currentWindows).has_value());
    EXPECT_EQ(caps, Caps::resetTimes);
}

TEST(ProviderCapabilities, AnySixteenBitValueIsKept) {
    const auto decoded = decodeJson<Caps>("65535");
    ASSERT_TRUE(decoded.hasValue());
    EXPECT_EQ(decoded->rawValue(), 0xFFFF);
    EXPECT_EQ(encodeJson(*decoded).serialized(), "65535");
    EXPECT_EQ(Caps(0x0300).unionWith(Caps::credits).rawValue(), 0x0320);
    EXPECT_FALSE(decodeJson<Caps>("65536").hasValue());
    EXPECT_FALSE(decodeJson<Caps>("-1").hasValue());
    EXPECT_FALSE(decodeJson<Caps>("1.5").hasValue());
}

ProviderProbeResult probeResult() {
    return ProviderProbeResult(ProviderDescriptor("app.gaugewell.codex.subscription", "Codex",
                                                  "Uses Codex's experimental local app-server protocol."),
                               ProviderAvailability::availableWithLimitations,
                               Caps{Caps::currentWindows, Caps::resetTimes}, "codex-cli 0.169.0",
                               {ProviderDiagnostic(DiagnosticSeverity::info, "codex.experimental_protocol",
                                                   "Uses an experimental protocol.")});
}

TEST(ProviderProbeResultCoding, WritesKeysInOrderAndRoundTrips) {
    const auto text = encodeJson(probeResult()).serialized();
    EXPECT_EQ(
        text,
        R"({"provider":{"id":"app.gaugewell.codex.subscription","displayName":"Codex",)"
        R"("integrationNotice":"Uses Codex's experimental local app-server protocol."},)"
        R"("availability":"availableWithLimitations","capabilities":3,"sourceVersion":"codex-cli 0.169.0",)"
        R"("diagnostics":[{"severity":"info","code":"codex.experimental_protocol",)"
        R"("message":"Uses an experimental protocol."}]})");
    const auto decoded = decodeJson<ProviderProbeResult>(text);
    ASSERT_TRUE(decoded.hasValue());
    EXPECT_EQ(encodeJson(decoded.value()).serialized(), text);
}

TEST(ProviderProbeResultCoding, SourceVersionIsOptionalButDiagnosticsAreNot) {
    const auto withoutVersion = decodeJson<ProviderProbeResult>(
        R"({"provider":{"id":"p","displayName":"P"},"availability":"available",)"
        R"("capabilities":0,"diagnostics":[]})");
    ASSERT_TRUE(withoutVersion.hasValue());
    EXPECT_FALSE(withoutVersion->sourceVersion().has_value());
    EXPECT_FALSE(withoutVersion->provider().integrationNotice().has_value());

    const auto withoutDiagnostics = decodeJson<ProviderProbeResult>(
        R"({"provider":{"id":"p","displayName":"P"},"availability":"available","capabilities":0})");
    ASSERT_FALSE(withoutDiagnostics.hasValue());
    EXPECT_EQ(withoutDiagnostics.error().path, "diagnostics");

    const auto badSeverity = decodeJson<ProviderProbeResult>(
        R"({"provider":{"id":"p","displayName":"P"},"availability":"available","capabilities":0,)"
        R"("diagnostics":[{"severity":"info","code":"a","message":"b"},{"severity":"fatal","code":"a","message":"b"}]})");
    ASSERT_FALSE(badSeverity.hasValue());
    EXPECT_EQ(badSeverity.error().path, "diagnostics[1].severity");
}

TEST(ProviderDiagnostic, EqualityAndHashCoverEveryField) {
    const ProviderDiagnostic a(DiagnosticSeverity::warning, "codex.invalid_window", "m");
    EXPECT_EQ(a, ProviderDiagnostic(DiagnosticSeverity::warning, "codex.invalid_window", "m"));
    EXPECT_EQ(a.hashValue(),
              ProviderDiagnostic(DiagnosticSeverity::warning, "codex.invalid_window", "m").hashValue());
    EXPECT_NE(a, ProviderDiagnostic(DiagnosticSeverity::error, "codex.invalid_window", "m"));
    EXPECT_NE(a, ProviderDiagnostic(DiagnosticSeverity::warning, "codex.invalid_window", "n"));
}

ProviderCollectionResult resultWith(std::vector<DiagnosticSeverity> severities) {
    std::vector<ProviderDiagnostic> diagnostics;
    for (const auto severity : severities) {
        diagnostics.emplace_back(severity, "p.code", "message");
    }
    return ProviderCollectionResult(ProviderDescriptor("p", "P", std::nullopt), Date(), {}, {}, diagnostics);
}

TEST(ProviderCollectionResult, FailsOnlyWithAnErrorDiagnostic) {
    EXPECT_FALSE(resultWith({}).hasErrorDiagnostic());
    EXPECT_FALSE(resultWith({DiagnosticSeverity::warning, DiagnosticSeverity::warning}).hasErrorDiagnostic());
    EXPECT_TRUE(resultWith({DiagnosticSeverity::info, DiagnosticSeverity::error, DiagnosticSeverity::info})
                    .hasErrorDiagnostic());
}

} // namespace
} // namespace gaugewell
