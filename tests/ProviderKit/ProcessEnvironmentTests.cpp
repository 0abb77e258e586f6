#include "ProviderKit/Process/ProcessEnvironment.h"

#include <gtest/gtest.h>

namespace gaugewell {
namespace {

// The default search path for a missing PATH is shown by CodexUsageProviderTests.
TEST(ProcessEnvironment, KeepsOnlyTheAllowListWithExactKeys) {
    const Environment allowed{{"HOME", "h"}, {"PATH", "p"},   {"TMPDIR", "t"},
                              {"LANG", "l"}, {"LC_ALL", "a"}, {"LC_CTYPE", "c"}};
    Environment from = allowed;
    from.insert(
        {{"lc_all", "C"}, {"OPENAI_API_KEY", "sk-x"}, {"LD_PRELOAD", "/x.so"}, {"LC_MESSAGES", "de"}});
    EXPECT_EQ(ProcessEnvironment::providerEnvironment(from), allowed);
    EXPECT_EQ(ProcessEnvironment::providerEnvironment({{"PATH", ""}}), (Environment{{"PATH", ""}}));
}

} // namespace
} // namespace gaugewell
