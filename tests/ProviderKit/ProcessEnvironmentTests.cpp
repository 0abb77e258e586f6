#include "ProviderKit/ProcessEnvironment.h"

#include <gtest/gtest.h>

namespace gaugewell {
namespace {

const std::string defaultPath = "/opt/homebrew/bin:/usr/local/bin:/usr/bin:/bin";

struct EnvironmentCase {
    const char* name;
    Environment from;
    Environment expected;
};

class ProcessEnvironmentTest : public ::testing::TestWithParam<EnvironmentCase> {};

TEST_P(ProcessEnvironmentTest, KeepsOnlyTheAllowListAndSuppliesASearchPath) {
    EXPECT_EQ(ProcessEnvironment::providerEnvironment(GetParam().from), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Environments, ProcessEnvironmentTest,
                         ::testing::Values(
                             EnvironmentCase{
                                 "KeysAreMatchedExactly",
                                 {{"HOME", "/home/a"}, {"PATH", "/usr/bin"}, {"USER", "a"}, {"lc_all", "C"}},
                                 {{"HOME", "/home/a"}, {"PATH", "/usr/bin"}}},
                             EnvironmentCase{"EmptyGetsOnlyTheDefaultPath", {}, {{"PATH", defaultPath}}},
                             EnvironmentCase{"PresentEmptyPathIsKept", {{"PATH", ""}}, {{"PATH", ""}}},
                             EnvironmentCase{"EveryAllowedKeyPasses",
                                             {{"HOME", "h"},
                                              {"PATH", "p"},
                                              {"TMPDIR", "t"},
                                              {"LANG", "l"},
                                              {"LC_ALL", "a"},
                                              {"LC_CTYPE", "c"}},
                                             {{"HOME", "h"},
                                              {"PATH", "p"},
                                              {"TMPDIR", "t"},
                                              {"LANG", "l"},
                                              {"LC_ALL", "a"},
                                              {"LC_CTYPE", "c"}}},
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
