#include "UsageDomain/RecordCoding.h"

#include <gtest/gtest.h>

namespace gaugewell {
namespace {

using Caps = ProviderCapabilities;

TEST(ProviderCapabilities, SetOperationsWorkOnTheRawValueAndKeepUnnamedBits) {
    const Caps a{Caps::currentWindows, Caps::resetTimes, Caps::credits};
    const Caps b{Caps::resetTimes, Caps::spend};
    EXPECT_EQ(a.unionWith(b).rawValue(), 99);
    EXPECT_EQ(a.symmetricDifference(b), (Caps{Caps::currentWindows, Caps::credits, Caps::spend}));
    EXPECT_TRUE(Caps::resetTimes.isSubset(a) && !b.isSubset(a) && !b.isDisjoint(a));
    Caps caps{Caps::currentWindows};
    EXPECT_TRUE(caps.insert(Caps::resetTimes).inserted);
    EXPECT_FALSE(caps.insert(Caps::resetTimes).inserted);
    EXPECT_EQ(caps.remove(b), Caps::resetTimes);
    EXPECT_EQ(caps.remove(b), std::nullopt);

    EXPECT_EQ(encodeJson(Caps(0x0300).unionWith(Caps::credits)).serialized(), "800");
    EXPECT_EQ(decodeJson<Caps>("65535")->rawValue(), 0xFFFF);
    for (const char* text : {"65536", "-1", "1.5"}) {
        EXPECT_FALSE(decodeJson<Caps>(text)) << text;
    }
}

TEST(ProviderProbeResultCoding, WritesKeysInOrderAndRoundTrips) {
    const ProviderProbeResult probe(
        ProviderDescriptor("app.gaugewell.codex.subscription", "Codex", "Uses an app-server."),
        ProviderAvailability::availableWithLimitations, Caps{Caps::currentWindows, Caps::resetTimes},
        "codex-cli 0.169.0",
        {ProviderDiagnostic(DiagnosticSeverity::info, "codex.experimental_protocol", "m")});
    const auto text = encodeJson(probe).serialized();
    EXPECT_EQ(text,
              R"({"provider":{"id":"app.gaugewell.codex.subscription","displayName":"Codex",)"
              R"("integrationNotice":"Uses an app-server."},"availability":"availableWithLimitations",)"
              R"("capabilities":3,"sourceVersion":"codex-cli 0.169.0","diagnostics":[{"severity":"info",)"
              R"("code":"codex.experimental_protocol","message":"m"}]})");
    EXPECT_EQ(encodeJson(decodeJson<ProviderProbeResult>(text).value()).serialized(), text);
}

TEST(ProviderProbeResultCoding, SourceVersionIsOptionalButDiagnosticsAreNot) {
    const std::string head =
        R"({"provider":{"id":"p","displayName":"P"},"availability":"available","capabilities":0)";
    const auto withoutVersion = decodeJson<ProviderProbeResult>(head + R"(,"diagnostics":[]})");
    ASSERT_TRUE(withoutVersion);
    EXPECT_EQ(withoutVersion->sourceVersion(), std::nullopt);
    EXPECT_EQ(decodeJson<ProviderProbeResult>(head + "}").error().path, "diagnostics");
    EXPECT_EQ(decodeJson<ProviderProbeResult>(
                  head + R"(,"diagnostics":[{"severity":"info","code":"a","message":"b"},)"
                         R"({"severity":"fatal","code":"a","message":"b"}]})")
                  .error()
                  .path,
              "diagnostics[1].severity");
}

} // namespace
} // namespace gaugewell
