#include "Platform/InMemorySecretStore.h"
#include "ProviderKit/ClaudeSignIn/ClaudeCredentialStore.h"
#include "RecordFixtures.h"

#include <gtest/gtest.h>

namespace gaugewell {
namespace {

const ClaudeOAuthCredential credential{
    "access-1", "refresh-1", testing::referencePlus(1000.5), {"user:profile", "x"}};

class ClaudeCredentialStoreTest : public ::testing::Test {
protected:
    std::shared_ptr<InMemorySecretStore> secrets = std::make_shared<InMemorySecretStore>();
    ClaudeCredentialStore store{secrets};
};

TEST_F(ClaudeCredentialStoreTest, StoresExactlyTheFourKeysUnderTheApplicationsServiceAndAccount) {
    ASSERT_TRUE(store.save(credential));
    EXPECT_EQ(secrets->load("app.gaugewell.claude.oauth", "primary").value(),
              R"({"accessToken":"access-1","refreshToken":"refresh-1","expiresAt":1000.5,)"
              R"("scopes":["user:profile","x"]})");
}

// Round trips and the secret store's own failures are shown through ClaudeOAuthSessionTests.
TEST_F(ClaudeCredentialStoreTest, UndecodableDataIsAStorageFailure) {
    for (const std::string stored :
         {"not json", R"({"accessToken":"a","refreshToken":"r","expiresAt":"2026","scopes":[]})"}) {
        ASSERT_TRUE(secrets->save(store.service(), store.account(), stored));
        EXPECT_EQ(store.load().error(), ClaudeOAuthError::credentialStorageFailed) << stored;
    }
}

} // namespace
} // namespace gaugewell
