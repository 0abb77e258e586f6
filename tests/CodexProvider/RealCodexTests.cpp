#include "CodexProvider/CodexAppServerTransport.h"
#include "CodexProvider/CodexUsageProvider.h"
#include "FakeCodex.h"
#include "ProviderKit/Process/PosixCommandRunner.h"
#include "RecordFixtures.h"

#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>

// The real `codex` CLI, installed by scripts/setup.sh, run signed out with a fresh home.
namespace gaugewell {
namespace {

namespace fs = std::filesystem;

class RealCodexTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::signal(SIGPIPE, SIG_IGN);
        codex = testing::realCodexExecutable();
        if (::testing::Test::HasFailure()) {
            GTEST_SKIP();
        }
    }

    void TearDown() override { EXPECT_TRUE(testing::childrenOfThisProcess().empty()); }

    CodexUsageProvider provider(std::optional<fs::path> configured, const std::string& path) const {
        return CodexUsageProvider(std::move(configured), ExecutableLocator(),
                                  std::make_shared<const PosixCommandRunner>(), home.path(),
                                  Environment{{"HOME", home.path().string()}, {"PATH", path}});
    }

    // Locating is only predictable when no codex sits in a well-known location of this machine.
    static bool wellKnownCodexInstalled() {
        return ExecutableLocator::isUsable("/opt/homebrew/bin/codex") ||
               ExecutableLocator::isUsable("/usr/local/bin/codex");
    }

    static void expectUsableProbe(const ProviderProbeResult& probe) {
        EXPECT_EQ(probe.availability(), ProviderAvailability::availableWithLimitations);
        EXPECT_EQ(probe.sourceVersion(), "codex-cli 0.169.0");
        ASSERT_EQ(probe.diagnostics().size(), 1u);
        EXPECT_EQ(probe.diagnostics()[0].code(), "codex.experimental_protocol");
        EXPECT_EQ(probe.capabilities().rawValue(), 7);
    }

    fs::path codex;
    testing::ScratchDirectory home;
};

TEST_F(RealCodexTest, SignedOutProbeIsUsableThroughTheExperimentalProtocol) {
    expectUsableProbe(provider(codex, "/usr/bin:/bin").probe());
}

TEST_F(RealCodexTest, SignedOutCollectionIsDeclinedWithTheServersRpcError) {
    const auto subject = provider(codex, "/usr/bin:/bin");
    const auto result = subject.collect({testing::fixedConnectionID(), dateFromUnixSeconds(1'795'000'000)});
    ASSERT_EQ(result.diagnostics().size(), 1u);
    EXPECT_EQ(result.diagnostics()[0].code(), "codex.rpc_error");
    EXPECT_TRUE(result.windows().empty() && result.tokenBuckets().empty());

    const auto response =
        CodexAppServerTransport(codex, subject.childEnvironment(codex), std::chrono::seconds(10), 1 << 20)
            .fetchUsage();
    ASSERT_FALSE(response.hasValue());
    EXPECT_EQ(response.error(), CodexProviderError::rpcError(-32600));
}

TEST_F(RealCodexTest, FoundThroughPath) {
    if (wellKnownCodexInstalled()) {
        GTEST_SKIP() << "a codex is installed in a well-known location of this machine";
    }
    const auto subject = provider(std::nullopt, "/usr/bin:" + codex.parent_path().string() + ":/bin");
    EXPECT_EQ(subject.resolveExecutable(), codex);
}

TEST_F(RealCodexTest, FoundThroughNodeVersionManager) {
    if (wellKnownCodexInstalled()) {
        GTEST_SKIP() << "a codex is installed in a well-known location of this machine";
    }
    const auto bin = home.path() / ".nvm/versions/node/v22.3.0/bin";
    fs::create_directories(bin);
    fs::create_symlink(codex, bin / "codex");
    fs::create_directories(home.path() / ".nvm/versions/node/v20.11.1/bin"); // no codex in this one
    const auto subject = provider(std::nullopt, "/usr/bin:/bin");
    EXPECT_EQ(subject.resolveExecutable(), bin / "codex");
    expectUsableProbe(subject.probe());
    EXPECT_EQ(subject.childEnvironment(bin / "codex").at("PATH"), bin.string() + ":/usr/bin:/bin");
}

} // namespace
} // namespace gaugewell
