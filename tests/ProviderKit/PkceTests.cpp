#include "ProviderKit/Pkce.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>
#include <span>
#include <vector>

namespace gaugewell {
namespace {

bool isURLSafe(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
               c == '_';
    });
}

TEST(Pkce, Base64URLEncodingHasNoPaddingAndUsesTheSafeAlphabet) {
    // 0xfb 0xff encodes to "+/8=" in standard Base64.
    for (const auto& [input, expected] :
         std::vector<std::pair<std::string_view, std::string>>{{"", ""},
                                                               {"f", "Zg"},
                                                               {"fo", "Zm8"},
                                                               {"foo", "Zm9v"},
                                                               {"foob", "Zm9vYg"},
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
    const auto verifier = Pkce::randomURLSafeString(Pkce::verifierByteCount);
    ASSERT_TRUE(verifier);
    EXPECT_EQ(verifier->size(), 64u);
    EXPECT_TRUE(isURLSafe(*verifier));
    const auto challenge = Pkce::challenge(*verifier);
    EXPECT_EQ(challenge.size(), 43u);
    EXPECT_TRUE(isURLSafe(challenge));
    std::set<std::string> states;
    for (int index = 0; index < 200; ++index) {
        const auto state = Pkce::randomURLSafeString(Pkce::stateByteCount).value_or("");
        EXPECT_TRUE(state.size() == 32u && isURLSafe(state));
        states.insert(state);
    }
    EXPECT_EQ(states.size(), 200u);
}

} // namespace
} // namespace gaugewell
