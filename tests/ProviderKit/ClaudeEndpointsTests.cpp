#include "ProviderKit/ClaudeEndpoints.h"
#include "ProviderKit/HttpUrl.h"

#include <gtest/gtest.h>
#include <ostream>

namespace gaugewell {
namespace {

TEST(ClaudeEndpoints, ProductionHostsAndFixedPaths) {
    const auto endpoints = ClaudeEndpoints::production();
    EXPECT_EQ(endpoints.authorizeURL(), "https://claude.com/cai/oauth/authorize");
    EXPECT_EQ(endpoints.tokenURL(), "https://platform.claude.com/v1/oauth/token");
    EXPECT_EQ(endpoints.revocationURL(), "https://platform.claude.com/v1/oauth/token/revoke");
    EXPECT_EQ(endpoints.successPageURL(), "https://platform.claude.com/oauth/code/success?app=claude-code");
    EXPECT_EQ(endpoints.usageURL(), "https://api.anthropic.com/api/oauth/usage");
}

TEST(ClaudeEndpoints, MissingOrEmptyVariablesKeepTheDefaults) {
    const auto endpoints =
        ClaudeEndpoints::fromEnvironment({{"GAUGEWELL_CLAUDE_API_URL", ""}, {"HOME", "/x"}});
    ASSERT_TRUE(endpoints.hasValue());
    EXPECT_EQ(endpoints->usageURL(), "https://api.anthropic.com/api/oauth/usage");
    EXPECT_EQ(endpoints->authorizeURL(), "https://claude.com/cai/oauth/authorize");
}

TEST(ClaudeEndpoints, EachVariableReplacesItsOwnBase) {
    const auto endpoints = ClaudeEndpoints::fromEnvironment({
        {"GAUGEWELL_CLAUDE_SIGNIN_URL", "http://127.0.0.1:8001/"},
        {"GAUGEWELL_CLAUDE_PLATFORM_URL", "http://localhost:8002/prefix"},
        {"GAUGEWELL_CLAUDE_API_URL", "https://api.example.test"},
    });
    ASSERT_TRUE(endpoints.hasValue());
    EXPECT_EQ(endpoints->authorizeURL(), "http://127.0.0.1:8001/cai/oauth/authorize");
    EXPECT_EQ(endpoints->tokenURL(), "http://localhost:8002/prefix/v1/oauth/token");
    EXPECT_EQ(endpoints->successPageURL(), "http://localhost:8002/prefix/oauth/code/success?app=claude-code");
    EXPECT_EQ(endpoints->usageURL(), "https://api.example.test/api/oauth/usage");
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
    EXPECT_TRUE(isLoopbackHost("127.0.0.1"));
    EXPECT_TRUE(isLoopbackHost("127.255.255.254"));
    EXPECT_TRUE(isLoopbackHost("Localhost"));
    EXPECT_TRUE(isLoopbackHost("[::1]"));
    EXPECT_FALSE(isLoopbackHost("127.1"));
    EXPECT_FALSE(isLoopbackHost("0x7f.0.0.1"));
    EXPECT_FALSE(isLoopbackHost("::1"));
    EXPECT_FALSE(isLoopbackHost("[::ffff:8.8.8.8]"));
    EXPECT_FALSE(isLoopbackHost("localhost."));
    EXPECT_FALSE(isLoopbackHost(""));
}

} // namespace
} // namespace gaugewell
