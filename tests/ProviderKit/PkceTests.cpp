#include "ProviderKit/Pkce.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>
#include <vector>

namespace gaugewell {
namespace {

std::vector<std::byte> bytesOf(std::initializer_list<unsigned> values) {
    std::vector<std::byte> bytes;
    for (const auto value : values) {
        bytes.push_back(static_cast<std::byte>(value));
    }
    return bytes;
}

bool isURLSafe(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
               c == '_';
    });
}

TEST(Pkce, Base64URLEncodingHasNoPaddingAndUsesTheSafeAlphabet) {
    EXPECT_EQ(Pkce::base64URLEncoded({}), "");
    EXPECT_EQ(Pkce::base64URLEncoded(bytesOf({'f'})), "Zg");
    EXPECT_EQ(Pkce::base64URLEncoded(bytesOf({'f', 'o'})), "Zm8");
    EXPECT_EQ(Pkce::base64URLEncoded(bytesOf({'f', 'o', 'o'})), "Zm9v");
    EXPECT_EQ(Pkce::base64URLEncoded(bytesOf({'f', 'o', 'o', 'b'})), "Zm9vYg");
    // 0xfb 0xff encodes to "+/8=" in standard Base64.
    EXPECT_EQ(Pkce::base64URLEncoded(bytesOf({0xfb, 0xff})), "-_8");
    EXPECT_EQ(Pkce::base64URLEncoded(bytesOf({0xff, 0xff, 0xff})), "____");
}

TEST(Pkce, ChallengeMatchesTheRfc7636Example) {
    EXPECT_EQ(Pkce::challenge("dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXk"),
              "E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM");
}

TEST(Pkce, VerifierAndStateHaveTheirFixedLengths) {
    const auto verifier = Pkce::randomURLSafeString(Pkce::verifierByteCount);
    const auto state = Pkce::randomURLSafeString(Pkce::stateByteCount);
    ASSERT_TRUE(verifier && state);
    EXPECT_EQ(verifier->size(), 64u);
    EXPECT_EQ(state->size(), 32u);
    EXPECT_TRUE(isURLSafe(*verifier));
    EXPECT_TRUE(isURLSafe(*state));
    const auto challenge = Pkce::challenge(*verifier);
    EXPECT_EQ(challenge.size(), 43u);
    EXPECT_TRUE(isURLSafe(challenge));
}

TEST(Pkce, RandomStringsDoNotRepeat) {
    std::set<std::string> seen;
    for (int index = 0; index < 200; ++index) {
        seen.insert(*Pkce::randomURLSafeString(Pkce::stateByteCount));
    }
    EXPECT_EQ(seen.size(), 200u);
}

} // namespace
} // namespace gaugewell
