#include "ProviderKit/ClaudeSignIn/Pkce.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <span>

namespace gaugewell {
namespace {

TEST(Pkce, Base64URLEncodingHasNoPaddingAndUsesTheSafeAlphabet) {
    // 0xfb 0xff is "+/8=" in standard Base64.
    for (const auto& [input, expected] :
         std::vector<std::pair<std::string_view, std::string>>{{"", ""},
                                                               {"f", "Zg"},
                                                               {"fo", "Zm8"},
                                                               {"foo", "Zm9v"},
                                                               {"\xfb\xff", "-_8"},
                                                               {"\xff\xff\xff", "____"}}) {
        EXPECT_EQ(Pkce::base64URLEncoded(std::as_bytes(std::span(input))), expected);
    }
}

TEST(Pkce, ChallengeMatchesTheRfc7636Example) {
    EXPECT_EQ(Pkce::challenge("dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXk"),
              "E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM");
}

TEST(Pkce, VerifierAndStateHaveTheirFixedLengthsAndDoNotRepeat) {
    const auto verifier = Pkce::randomURLSafeString(Pkce::verifierByteCount).value();
    const auto state = Pkce::randomURLSafeString(Pkce::stateByteCount).value();
    EXPECT_THAT(verifier, ::testing::MatchesRegex("[-_A-Za-z0-9]{64}"));
    EXPECT_THAT(state, ::testing::MatchesRegex("[-_A-Za-z0-9]{32}"));
    EXPECT_NE(state, Pkce::randomURLSafeString(Pkce::stateByteCount).value());
}

} // namespace
} // namespace gaugewell
