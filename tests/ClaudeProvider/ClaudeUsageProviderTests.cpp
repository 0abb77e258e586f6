#include "ClaudeProvider/ClaudeUsageDiagnostics.h"
#include "ClaudeProvider/ClaudeUsageProvider.h"
#include "FakeClaudeService.h"
#include "ProviderKit/Http/CurlHttpClient.h"
#include "RawSocketServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace gaugewell {
namespace {

using ::testing::ElementsAre;
using testing::HttpAnswer;
using ::testing::IsEmpty;
using testing::RawSocketServer;
using namespace std::chrono_literals;

const Uuid claudeConnection = *Uuid::parse("A115A6E0-337E-4F26-9809-6B2E75C39D02");
const Date observed = dateFromUnixSeconds(1'795'360'000);
const std::string issuedToken = testing::FakeClaudeService::TokenScript().accessToken;

// The session's side of a collection: whether there is a sign-in and which token it yields.
class FixedTokenSource final : public ClaudeAccessTokenSource {
public:
    bool isSignedIn() override { return signedIn; }
    Expected<std::string, ClaudeOAuthError> validAccessToken() override {
        ++tokenRequests;
        return token;
    }

    bool signedIn = true;
    Expected<std::string, ClaudeOAuthError> token = issuedToken;
    int tokenRequests = 0;
};

class ClaudeUsageProviderTest : public ::testing::Test {
protected:
    ProviderCollectionResult collect(std::string apiBase = {}, std::chrono::milliseconds timeout = 10s) {
        const auto base = fake.server().baseURL();
        const auto endpoints = ClaudeEndpoints::make(base, base, apiBase.empty() ? base : apiBase).value();
        return ClaudeUsageProvider(tokens, std::make_shared<CurlHttpClient>(), endpoints, timeout)
            .collect(UsageCollectionRequest(claudeConnection, observed));
    }

    void expectSingleError(const ProviderCollectionResult& result, ClaudeUsageIssue issue) {
        EXPECT_EQ(result.collectedAt(), observed);
        EXPECT_THAT(result.windows(), IsEmpty());
        EXPECT_THAT(result.diagnostics(), ElementsAre(claudeDiagnostic(issue)));
    }

    testing::FakeClaudeService fake;
    std::shared_ptr<FixedTokenSource> tokens = std::make_shared<FixedTokenSource>();
};

TEST_F(ClaudeUsageProviderTest, ProbeReadsOnlyTheSignInState) {
    const ClaudeUsageProvider provider(tokens, std::make_shared<CurlHttpClient>(), fake.endpoints());
    const auto signedIn = provider.probe();
    EXPECT_EQ(signedIn.availability(), ProviderAvailability::availableWithLimitations);
    EXPECT_EQ(signedIn.capabilities().rawValue(), 19);
    EXPECT_THAT(signedIn.diagnostics(),
                ElementsAre(claudeDiagnostic(ClaudeUsageIssue::undocumentedAccountEndpoint)));
    tokens->signedIn = false;
    const auto signedOut = provider.probe();
    EXPECT_EQ(signedOut.availability(), ProviderAvailability::authenticationRequired);
    EXPECT_TRUE(signedOut.capabilities().isEmpty());
    EXPECT_THAT(signedOut.diagnostics(), IsEmpty());
    EXPECT_EQ(tokens->tokenRequests, 0);
    EXPECT_THAT(fake.server().requests(), IsEmpty());
}

TEST_F(ClaudeUsageProviderTest, SendsOneAuthenticatedGetAndReadsTheWindows) {
    const auto result = collect();
    EXPECT_THAT(result.diagnostics(), IsEmpty());
    ASSERT_EQ(result.windows().size(), 4u); // the mapping is the normalizer's
    const auto requests = fake.server().requests();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].method, "GET");
    EXPECT_EQ(requests[0].target, "/api/oauth/usage");
    EXPECT_TRUE(requests[0].get_header_value("Authorization") == "Bearer " + issuedToken);
    EXPECT_EQ(requests[0].get_header_value("Accept"), "application/json");
    EXPECT_EQ(requests[0].get_header_value("anthropic-beta"), "oauth-2025-04-20");
}

// Exactly the fixed diagnostic: neither the token nor the server's body can reach it.
TEST_F(ClaudeUsageProviderTest, EveryFailureIsOneFixedDiagnostic) {
    const struct {
        const char* name;
        Expected<std::string, ClaudeOAuthError> token;
        int status;
        std::string body;
        ClaudeUsageIssue issue;
    } cases[] = {
        {"401", issuedToken, 401, R"({"error":"token )" + issuedToken + R"( is bad"})",
         ClaudeUsageIssue::authorizationRejected},
        {"403", issuedToken, 403, "{}", ClaudeUsageIssue::authorizationRejected},
        {"429", issuedToken, 429, "{}", ClaudeUsageIssue::rateLimited},
        {"201", issuedToken, 201, R"({"five_hour":{"utilization":1}})", ClaudeUsageIssue::httpError},
        {"schema", issuedToken, 200, R"({"five_hour":{"utilization":"41.5"}})",
         ClaudeUsageIssue::schemaError},
        {"refresh failed", unexpected(ClaudeOAuthError::tokenRefreshFailed), 200, "",
         ClaudeUsageIssue::authorizationExpired},
        {"signed out", unexpected(ClaudeOAuthError::signedOut), 200, "",
         ClaudeUsageIssue::authenticationRequired},
        {"keyring", unexpected(ClaudeOAuthError::credentialStorageFailed), 200, "",
         ClaudeUsageIssue::collectionFailed},
    };
    for (const auto& [name, token, status, body, issue] : cases) {
        SCOPED_TRACE(name);
        const auto before = fake.server().requests().size();
        tokens->token = token;
        fake.setUsage(status, body);
        expectSingleError(collect(), issue);
        EXPECT_EQ(fake.server().requests().size() - before,
                  token ? 1u : 0u); // no retry, nothing sent without a token
    }
    EXPECT_EQ(tokens->tokenRequests, static_cast<int>(std::size(cases))); // asked again for every collection
}

TEST_F(ClaudeUsageProviderTest, ARateLimitCarriesTheServicesRetryAfter) {
    fake.setUsage(429, "{}", {{"Retry-After", "600"}});
    const auto limited = collect();
    expectSingleError(limited, ClaudeUsageIssue::rateLimited);
    EXPECT_EQ(limited.retryNotBefore(), addingSeconds(observed, 600));
    fake.setUsage(429, "{}", {{"Retry-After", "whenever"}});
    EXPECT_FALSE(collect().retryNotBefore().has_value());
}

TEST_F(ClaudeUsageProviderTest, TransportFailuresAreOneFixedDiagnostic) {
    const RawSocketServer notHttp("SSH-2.0-OpenSSH_9.2\r\n\r\n");
    expectSingleError(collect(notHttp.baseURL()), ClaudeUsageIssue::invalidResponse);

    const RawSocketServer silent{RawSocketServer::Silent()};
    const auto started = std::chrono::steady_clock::now();
    expectSingleError(collect(silent.baseURL(), 250ms), ClaudeUsageIssue::collectionFailed);
    EXPECT_LT(std::chrono::steady_clock::now() - started, 5s);

    fake.setUsage(200, "{\"pad\":\"" + std::string(ClaudeUsageProvider::maximumResponseBytes, 'x') + "\"}");
    expectSingleError(collect(), ClaudeUsageIssue::collectionFailed);
}

} // namespace
} // namespace gaugewell
