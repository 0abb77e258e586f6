#include "Platform/SecureRandom.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace gaugewell {
namespace {

TEST(SecureRandom, FillsLargeBuffersCompletely) {
    // Past 256 bytes getrandom may return short counts; every byte must still be written.
    const auto bytes = SecureRandom::bytes(1 << 20);
    ASSERT_EQ(bytes.size(), 1u << 20);
    EXPECT_LT(std::count(bytes.begin(), bytes.end(), std::byte{0}), (1 << 20) / 128); // about 1/256 expected
}

} // namespace
} // namespace gaugewell
