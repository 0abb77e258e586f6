#include "Platform/Sha256.h"

#include <gtest/gtest.h>
#include <ostream>
#include <string>

namespace gaugewell {
namespace {

std::string hex(const Sha256::Digest& digest) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (const auto byte : digest) {
        text.push_back(digits[std::to_integer<unsigned>(byte) >> 4]);
        text.push_back(digits[std::to_integer<unsigned>(byte) & 15]);
    }
    return text;
}

struct Vector {
    std::string input;
    std::string expected;
};

void PrintTo(const Vector& vector, std::ostream* out) {
    *out << vector.input.size() << " bytes";
}

class Sha256KnownAnswers : public ::testing::TestWithParam<Vector> {};

// FIPS 180-2 examples, including the two-block message and one that is not a whole number of blocks.
TEST_P(Sha256KnownAnswers, MatchesPublishedDigest) {
    EXPECT_EQ(hex(Sha256::digest(GetParam().input)), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Fips180, Sha256KnownAnswers,
    ::testing::Values(Vector{"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
                      Vector{"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
                      Vector{"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
                             "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
                      Vector{std::string(1'000'000, 'a'),
                             "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"}));

TEST(Sha256, HashesBytesWithEmbeddedZeros) {
    const std::string withZero("a\0b", 3);
    EXPECT_NE(Sha256::digest(withZero), Sha256::digest(std::string_view("a")));
    EXPECT_EQ(Sha256::digest(withZero),
              Sha256::digest(std::as_bytes(std::span(withZero.data(), withZero.size()))));
}

} // namespace
} // namespace gaugewell
