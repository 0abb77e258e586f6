#include "ProviderKit/Process/ProcessEnvironment.h"

#include <gtest/gtest.h>

namespace gaugewell {
namespace {

const std::string defaultPath = "/opt/homebrew/bin:/usr/local/bin:/usr/bin:/bin";
const Environment allowed{{"HOME", "h"}, {"PATH", "p"},   {"TMPDIR", "t"},
                          {"LANG", "l"}, {"LC_ALL", "a"}, {"LC_CTYPE", "c"}};

Environment adding(Environment environment, const Environment& more) {
    environment.insert(more.begin(), more.end());
    return environment;
}

struct EnvironmentCase {
    const char* name;
    Environment from;
    Environment expected;
};

class ProcessEnvironmentTest : public ::testing::TestWithParam<EnvironmentCase> {};

TEST_P(ProcessEnvironmentTest, KeepsOnlyTheAllowListAndSuppliesASearchPath) {
    EXPECT_EQ(ProcessEnvironment::providerEnvironment(GetParam().from), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Environments, ProcessEnvironmentTest,
    ::testing::Values(EnvironmentCase{"EveryAllowedKeyPassesAndKeysAreMatchedExactly",
                                      adding(allowed, {{"USER", "u"}, {"lc_all", "C"}, {"Home", "/x"}}),
                                      allowed},
                      EnvironmentCase{"EmptyGetsOnlyTheDefaultPath", {}, {{"PATH", defaultPath}}},
                      EnvironmentCase{"PresentEmptyPathIsKept", {{"PATH", ""}}, {{"PATH", ""}}},
                      EnvironmentCase{"SecretsAndLoaderSettingsStayWithUs",
                                      {{"OPENAI_API_KEY", "sk-x"},
                                       {"CODEX_HOME", "/c"},
                                       {"LD_PRELOAD", "/x.so"},
                                       {"HTTPS_PROXY", "http://p"},
                                       {"LC_MESSAGES", "de"},
                                       {"TMPDIR", "/tmp"}},
                                      {{"TMPDIR", "/tmp"}, {"PATH", defaultPath}}}),
    [](const auto& info) { return std::string(info.param.name); });

} // namespace
} // namespace gaugewell
