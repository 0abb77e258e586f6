#include "ProviderKit/ClaudeSignIn/ClaudeEndpoints.h"
#include "ProviderKit/Http/HttpUrl.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace gaugewell {
namespace {

using ::testing::ElementsAre;

std::vector<std::string> urls(const ClaudeEndpoints& endpoints) {
    return {endpoints.authorizeURL(), endpoints.tokenURL(), endpoints.revocationURL(),
            endpoints.successPageURL(), endpoints.usageURL()};
}

TEST(ClaudeEndpoints, ProductionHostsAreKeptWhenVariablesAreMissingOrEmpty) {
    const auto endpoints =
        ClaudeEndpoints::fromEnvironment({{"GAUGEWELL_CLAUDE_API_URL", ""}, {"HOME", "/x"}});
    EXPECT_THAT(urls(endpoints.value()),
                ElementsAre("https://claude.com/cai/oauth/authorize",
                            "https://platform.claude.com/v1/oauth/token",
                            "https://platform.claude.com/v1/oauth/token/revoke",
                            "https://platform.claude.com/oauth/code/success?app=claude-code",
                            "https://api.anthropic.com/api/oauth/usage"));
}

TEST(ClaudeEndpoints, EachVariableReplacesItsOwnBase) {
    const auto endpoints = ClaudeEndpoints::fromEnvironment({
        {"GAUGEWELL_CLAUDE_SIGNIN_URL", "http://127.0.0.1:8001/"},
        {"GAUGEWELL_CLAUDE_PLATFORM_URL", "http://localhost:8002/prefix"},
        {"GAUGEWELL_CLAUDE_API_URL", "https://api.example.test"},
    });
    EXPECT_THAT(urls(endpoints.value()),
                ElementsAre("http://127.0.0.1:8001/cai/oauth/authorize",
                            "http://localhost:8002/prefix/v1/oauth/token",
                            "http://localhost:8002/prefix/v1/oauth/token/revoke",
                            "http://localhost:8002/prefix/oauth/code/success?app=claude-code",
                            "https://api.example.test/api/oauth/usage"));
}

TEST(ClaudeEndpoints, AnUnusableBaseIsAnErrorNamingItsVariable) {
    for (const char* base : {"http://example.com", "ftp://127.0.0.1", "127.0.0.1:9000", "not a url",
                             "https://user:pw@platform.example.test", "https://platform.example.test/?x=1",
                             "https://platform.example.test/#x", "https://platform.example.test/a b"}) {
        EXPECT_EQ(ClaudeEndpoints::fromEnvironment({{"GAUGEWELL_CLAUDE_PLATFORM_URL", base}}).error(),
                  ClaudeEndpointsError::invalidPlatformURL)
            << base;
    }
    const auto signIn =
        ClaudeEndpoints::fromEnvironment({{"GAUGEWELL_CLAUDE_SIGNIN_URL", "http://10.0.0.1"}});
    EXPECT_EQ(describe(signIn.error()),
              "GAUGEWELL_CLAUDE_SIGNIN_URL must be an https:// base URL (http:// only for a loopback host)");
    const auto api = ClaudeEndpoints::fromEnvironment({{"GAUGEWELL_CLAUDE_API_URL", "http://10.0.0.1"}});
    EXPECT_EQ(describe(api.error()),
              "GAUGEWELL_CLAUDE_API_URL must be an https:// base URL (http:// only for a loopback host)");
}

TEST(HttpUrl, LoopbackHostsAreRecognisedStrictly) {
    for (const char* host : {"127.0.0.1", "127.255.255.254", "Localhost", "[::1]"}) {
        EXPECT_TRUE(isLoopbackHost(host)) << host;
    }
    for (const char* host :
         {"127.1", "0x7f.0.0.1", "128.0.0.1", "0.0.0.0", "::1", "[::2]", "[::ffff:8.8.8.8]", "localhost.",
          "localhost.evil.test", "127.0.0.1.evil.test", ""}) {
        EXPECT_FALSE(isLoopbackHost(host)) << host;
    }
}

} // namespace
} // namespace gaugewell
