#include "ProviderKit/ClaudeSignIn/Pkce.h"

#include <gtest/gtest.h>
#include <span>

namespace gaugewell {
namespace {

// The lengths of the verifier and the state are shown by the sign-in's own test.
TEST(Pkce, Base64URLEncodingHasNoPaddingAndUsesTheSafeAlphabet) {
    // 0xfb 0xff is "+/8=" in standard Base64.
    for (const auto& [input, expected] : std::vector<std::pair<std::string_view, std::string>>{
             {"f", "Zg"}, {"fo", "Zm8"}, {"\xfb\xff", "-_8"}, {"\xff\xff\xff", "____"}}) {
        EXPECT_EQ(Pkce::base64URLEncoded(std::as_bytes(std::span(input))), expected);
    }
}

TEST(Pkce, ChallengeMatchesTheRfc7636Example) {
    EXPECT_EQ(Pkce::challenge("dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXk"),
              "E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM");
}

} // namespace
} // namespace gaugewell
