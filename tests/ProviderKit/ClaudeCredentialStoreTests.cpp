#include "Platform/InMemorySecretStore.h"
#include "ProviderKit/ClaudeCredentialStore.h"
#include "RecordFixtures.h"

#include <gtest/gtest.h>

namespace gaugewell {
namespace {

ClaudeOAuthCredential sampleCredential() {
    return ClaudeOAuthCredential{
        "access-1", "refresh-1", testing::referencePlus(1000.5), {"user:profile", "x"}};
}

class ClaudeCredentialStoreTest : public ::testing::Test {
protected:
    std::shared_ptr<InMemorySecretStore> secrets = std::make_shared<InMemorySecretStore>();
    ClaudeCredentialStore store{secrets};
};

TEST_F(ClaudeCredentialStoreTest, StoresExactlyTheFourKeysUnderTheApplicationsServiceAndAccount) {
    EXPECT_EQ(store.service(), "app.gaugewell.claude.oauth");
    EXPECT_EQ(store.account(), "primary");
    ASSERT_TRUE(store.save(sampleCredential()).hasValue());
    EXPECT_EQ(secrets->load("app.gaugewell.claude.oauth", "primary").secret,
              R"({"accessToken":"access-1","refreshToken":"refresh-1","expiresAt":1000.5,)"
              R"("scopes":["user:profile","x"]})");
}

TEST_F(ClaudeCredentialStoreTest, RoundTripsAndReplaces) {
    ASSERT_TRUE(store.save(sampleCredential()).hasValue());
    auto second = sampleCredential();
    second.accessToken = "access-2";
    second.scopes.clear();
    ASSERT_TRUE(store.save(second).hasValue());
    const auto loaded = store.load();
    ASSERT_TRUE(loaded.hasValue());
    EXPECT_EQ(*loaded, second);
    EXPECT_EQ(secrets->itemCount(), 1u);
}

TEST_F(ClaudeCredentialStoreTest, EmptyStoreLoadsNothingAndRemovesWithoutError) {
    const auto loaded = store.load();
    ASSERT_TRUE(loaded.hasValue());
    EXPECT_FALSE(loaded->has_value());
    EXPECT_TRUE(store.remove().hasValue());
}

TEST_F(ClaudeCredentialStoreTest, UndecodableDataIsAStorageFailure) {
    for (const std::string stored :
         {"not json", "{}", R"({"accessToken":"a","refreshToken":"r","expiresAt":"2026","scopes":[]})",
          R"({"accessToken":"a","refreshToken":"r","expiresAt":1,"scopes":"x"})"}) {
        ASSERT_FALSE(secrets->save(store.service(), store.account(), stored));
        const auto loaded = store.load();
        ASSERT_FALSE(loaded.hasValue()) << stored;
        EXPECT_EQ(loaded.error(), ClaudeOAuthError::credentialStorageFailed);
    }
}

TEST_F(ClaudeCredentialStoreTest, EverySecretStoreFailureIsAStorageFailure) {
    for (const auto failure : {SecretStoreError::unavailable, SecretStoreError::locked,
                               SecretStoreError::timedOut, SecretStoreError::failed}) {
        secrets->setFailure(failure);
        EXPECT_EQ(store.load().error(), ClaudeOAuthError::credentialStorageFailed);
        EXPECT_EQ(store.save(sampleCredential()).error(), ClaudeOAuthError::credentialStorageFailed);
        EXPECT_EQ(store.remove().error(), ClaudeOAuthError::credentialStorageFailed);
    }
}

TEST(ClaudeOAuthCredential, UnknownKeysAreIgnoredWhenDecoding) {
    const auto decoded = decodeJson<ClaudeOAuthCredential>(
        R"({"accessToken":"a","refreshToken":"r","expiresAt":-5,"scopes":[],"extra":true})");
    ASSERT_TRUE(decoded.hasValue());
    EXPECT_EQ(decoded->expiresAt, testing::referencePlus(-5));
}

} // namespace
} // namespace gaugewell
