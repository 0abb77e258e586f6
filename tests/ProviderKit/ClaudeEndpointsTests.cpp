#include "ProviderKit/ClaudeSignIn/ClaudeEndpoints.h"
#include "ProviderKit/Http/HttpUrl.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace gaugewell {
namespace {

using ::testing::ElementsAre;

// Missing or empty variables keep the production base.
TEST(ClaudeEndpoints, EachVariableReplacesItsOwnBase) {
    const auto endpoints =
        ClaudeEndpoints::fromEnvironment({{"GAUGEWELL_CLAUDE_SIGNIN_URL", "http://localhost:8001/prefix/"},
                                          {"GAUGEWELL_CLAUDE_API_URL", ""}})
            .value();
    EXPECT_THAT((std::vector{endpoints.authorizeURL(), endpoints.tokenURL(), endpoints.revocationURL(),
                             endpoints.successPageURL(), endpoints.usageURL()}),
                ElementsAre("http://localhost:8001/prefix/cai/oauth/authorize",
                            "https://platform.claude.com/v1/oauth/token",
                            "https://platform.claude.com/v1/oauth/token/revoke",
                            "https://platform.claude.com/oauth/code/success?app=claude-code",
                            "https://api.anthropic.com/api/oauth/usage"));
}

TEST(ClaudeEndpoints, AnUnusableBaseIsAnErrorNamingItsVariable) {
    for (const char* base : {"http://example.com", "ftp://127.0.0.1", "127.0.0.1:9000",
                             "https://user:pw@platform.example.test", "https://platform.example.test/?x=1",
                             "https://platform.example.test/#x", "https://platform.example.test/a b"}) {
        EXPECT_EQ(ClaudeEndpoints::fromEnvironment({{"GAUGEWELL_CLAUDE_PLATFORM_URL", base}}).error(),
                  ClaudeEndpointsError::invalidPlatformURL)
            << base;
    }
    for (const std::string variable : {"GAUGEWELL_CLAUDE_SIGNIN_URL", "GAUGEWELL_CLAUDE_API_URL"}) {
        EXPECT_EQ(describe(ClaudeEndpoints::fromEnvironment({{variable, "http://10.0.0.1"}}).error()),
                  variable + " must be an https:// base URL (http:// only for a loopback host)");
    }
}

TEST(HttpUrl, LoopbackHostsAreRecognisedStrictly) {
    for (const char* host : {"127.255.255.254", "Localhost", "[::1]"}) {
        EXPECT_TRUE(isLoopbackHost(host)) << host;
    }
    for (const char* host : {"127.1", "128.0.0.1", "0.0.0.0", "[::2]", "localhost.evil.test", ""}) {
        EXPECT_FALSE(isLoopbackHost(host)) << host;
    }
}

} // namespace
} // namespace gaugewell
