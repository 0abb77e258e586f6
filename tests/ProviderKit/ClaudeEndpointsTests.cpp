#include "ProviderKit/ClaudeEndpoints.h"
#include "ProviderKit/HttpUrl.h"

#include <gtest/gtest.h>
#include <ostream>

namespace gaugewell {
namespace {

std::vector<std::string> urls(const ClaudeEndpoints& endpoints) {
    return {endpoints.authorizeURL(), endpoints.tokenURL(), endpoints.revocationURL(),
            endpoints.successPageURL(), endpoints.usageURL()};
}

TEST(ClaudeEndpoints, ProductionHostsAreKeptWhenVariablesAreMissingOrEmpty) {
    const std::vector<std::string> production{
        "https://claude.com/cai/oauth/authorize", "https://platform.claude.com/v1/oauth/token",
        "https://platform.claude.com/v1/oauth/token/revoke",
        "https://platform.claude.com/oauth/code/success?app=claude-code",
        "https://api.anthropic.com/api/oauth/usage"};
    EXPECT_EQ(urls(ClaudeEndpoints::production()), production);
    const auto endpoints =
        ClaudeEndpoints::fromEnvironment({{"GAUGEWELL_CLAUDE_API_URL", ""}, {"HOME", "/x"}});
    ASSERT_TRUE(endpoints.hasValue());
    EXPECT_EQ(urls(*endpoints), production);
}

TEST(ClaudeEndpoints, EachVariableReplacesItsOwnBase) {
    const auto endpoints = ClaudeEndpoints::fromEnvironment({
        {"GAUGEWELL_CLAUDE_SIGNIN_URL", "http://127.0.0.1:8001/"},
        {"GAUGEWELL_CLAUDE_PLATFORM_URL", "http://localhost:8002/prefix"},
        {"GAUGEWELL_CLAUDE_API_URL", "https://api.example.test"},
    });
    ASSERT_TRUE(endpoints.hasValue());
    EXPECT_EQ(urls(*endpoints),
              (std::vector<std::string>{"http://127.0.0.1:8001/cai/oauth/authorize",
                                        "http://localhost:8002/prefix/v1/oauth/token",
                                        "http://localhost:8002/prefix/v1/oauth/token/revoke",
                                        "http://localhost:8002/prefix/oauth/code/success?app=claude-code",
                                        "https://api.example.test/api/oauth/usage"}));
}

struct BaseCase {
    std::string url;
    bool accepted;
};

void PrintTo(const BaseCase& base, std::ostream* out) {
    *out << base.url;
}

class EndpointOverride : public ::testing::TestWithParam<BaseCase> {};

TEST_P(EndpointOverride, AcceptsOnlyHttpsOrLoopbackHttp) {
    const auto endpoints =
        ClaudeEndpoints::fromEnvironment({{"GAUGEWELL_CLAUDE_PLATFORM_URL", GetParam().url}});
    EXPECT_EQ(endpoints.hasValue(), GetParam().accepted) << GetParam().url;
    if (!GetParam().accepted) {
        EXPECT_EQ(endpoints.error(), ClaudeEndpointsError::invalidPlatformURL);
    }
}

INSTANTIATE_TEST_SUITE_P(
    ClaudeEndpoints, EndpointOverride,
    ::testing::Values(BaseCase{"https://platform.example.test", true},
                      BaseCase{"http://127.0.0.1:9000", true}, BaseCase{"http://127.45.6.7:9000", true},
                      BaseCase{"http://localhost:9000", true}, BaseCase{"http://LOCALHOST:9000", true},
                      BaseCase{"http://[::1]:9000", true}, BaseCase{"http://example.com", false},
                      BaseCase{"http://10.0.0.1:9000", false}, BaseCase{"http://128.0.0.1", false},
                      BaseCase{"http://127.0.0.1.evil.test", false},
                      BaseCase{"http://localhost.evil.test", false}, BaseCase{"http://[::2]:9000", false},
                      BaseCase{"ftp://127.0.0.1", false}, BaseCase{"127.0.0.1:9000", false},
                      BaseCase{"https://user:pw@platform.example.test", false},
                      BaseCase{"https://platform.example.test/?x=1", false},
                      BaseCase{"https://platform.example.test/#x", false},
                      BaseCase{"https://platform.example.test/a b", false}, BaseCase{"not a url", false}));

TEST(ClaudeEndpoints, ErrorsNameTheirVariable) {
    EXPECT_EQ(
        ClaudeEndpoints::fromEnvironment({{"GAUGEWELL_CLAUDE_SIGNIN_URL", "http://example.com"}}).error(),
        ClaudeEndpointsError::invalidSignInURL);
    EXPECT_EQ(ClaudeEndpoints::fromEnvironment({{"GAUGEWELL_CLAUDE_API_URL", "http://example.com"}}).error(),
              ClaudeEndpointsError::invalidApiURL);
    EXPECT_NE(describe(ClaudeEndpointsError::invalidApiURL).find("GAUGEWELL_CLAUDE_API_URL"),
              std::string::npos);
}

TEST(HttpUrl, LoopbackHostsAreRecognisedStrictly) {
    for (const char* host : {"127.0.0.1", "127.255.255.254", "Localhost", "[::1]"}) {
        EXPECT_TRUE(isLoopbackHost(host)) << host;
    }
    for (const char* host : {"127.1", "0x7f.0.0.1", "::1", "[::ffff:8.8.8.8]", "localhost.", ""}) {
        EXPECT_FALSE(isLoopbackHost(host)) << host;
    }
}

} // namespace
} // namespace gaugewell
