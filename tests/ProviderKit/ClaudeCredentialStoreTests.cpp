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

TEST_F(ClaudeCredentialStoreTest, RoundTripsAndReplaces) {
    EXPECT_EQ(store.load().value(), std::nullopt);
    ASSERT_TRUE(store.save(credential));
    auto second = credential;
    second.accessToken = "access-2";
    second.scopes.clear();
    ASSERT_TRUE(store.save(second));
    EXPECT_EQ(store.load().value(), second);
    ASSERT_TRUE(store.remove());
    EXPECT_TRUE(store.remove()); // removing nothing succeeds
    EXPECT_EQ(secrets->itemCount(), 0u);
}

TEST_F(ClaudeCredentialStoreTest, UndecodableDataAndSecretStoreFailuresAreStorageFailures) {
    for (const std::string stored :
         {"not json", R"({"accessToken":"a","refreshToken":"r","expiresAt":"2026","scopes":[]})"}) {
        ASSERT_TRUE(secrets->save(store.service(), store.account(), stored));
        EXPECT_EQ(store.load().error(), ClaudeOAuthError::credentialStorageFailed) << stored;
    }
    secrets->setFailure(SecretStoreError::locked);
    EXPECT_EQ(store.load().error(), ClaudeOAuthError::credentialStorageFailed);
    EXPECT_EQ(store.save(credential).error(), ClaudeOAuthError::credentialStorageFailed);
    EXPECT_EQ(store.remove().error(), ClaudeOAuthError::credentialStorageFailed);
}

} // namespace
} // namespace gaugewell
