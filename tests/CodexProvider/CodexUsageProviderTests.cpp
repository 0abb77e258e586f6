#include "CodexProvider/CodexDiagnostics.h"
#include "CodexProvider/CodexUsageProvider.h"
#include "FakeCodex.h"
#include "RecordFixtures.h"

#include <algorithm>
#include <condition_variable>
#include <csignal>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <mutex>

namespace gaugewell {
namespace {

namespace fs = std::filesystem;
using testing::FakeCodex;
using testing::ScratchDirectory;

struct RunCall {
    fs::path executable;
    std::vector<std::string> arguments;
    Environment environment;
    std::chrono::milliseconds timeout;
    std::int64_t outputLimit;
};

using RunResult = Expected<CommandOutput, ProcessSupportError>;

// Answers by argument list. With `requireOverlap`, the version and help runs each wait (bounded)
// until the other has started, so a probe that ran them one after the other would see a failure.
class FakeRunner final : public CommandRunning {
public:
    RunResult version = CommandOutput{0, "codex-cli 1.2.3\n", ""};
    RunResult help = CommandOutput{0, "Usage: codex app-server [OPTIONS]\n", ""};
    bool requireOverlap = false;

    RunResult run(const fs::path& executable, const std::vector<std::string>& arguments,
                  const Environment& environment, std::chrono::milliseconds timeout,
                  std::int64_t outputLimit) const override {
        std::unique_lock lock(mutex);
        calls.push_back({executable, arguments, environment, timeout, outputLimit});
        const bool isVersion = arguments == std::vector<std::string>{"--version"};
        ++started;
        changed.notify_all();
        if (requireOverlap &&
            !changed.wait_for(lock, std::chrono::seconds(5), [&] { return started >= 2; })) {
            overlapped = false;
        }
        return isVersion ? version : help;
    }

    std::vector<RunCall> recordedCalls() const {
        std::lock_guard lock(mutex);
        return calls;
    }

    mutable std::mutex mutex;
    mutable std::condition_variable changed;
    mutable std::vector<RunCall> calls;
    mutable int started = 0;
    mutable bool overlapped = true;
};

std::vector<std::string> codes(const std::vector<ProviderDiagnostic>& diagnostics) {
    std::vector<std::string> codes;
    for (const auto& diagnostic : diagnostics) {
        codes.push_back(diagnostic.code());
    }
    return codes;
}

class CodexUsageProviderTest : public ::testing::Test {
protected:
    void SetUp() override { std::signal(SIGPIPE, SIG_IGN); }

    CodexUsageProvider provider(std::optional<fs::path> configured, Environment environment = {}) const {
        if (!environment.contains("PATH")) {
            environment["PATH"] = (home.path() / "empty-bin").string();
        }
        environment["HOME"] = home.path().string();
        return CodexUsageProvider(std::move(configured), ExecutableLocator(), runner, home.path(),
                                  environment);
    }

    static bool wellKnownLocationsAreEmpty() {
        return !ExecutableLocator::isUsable("/opt/homebrew/bin/codex") &&
               !ExecutableLocator::isUsable("/usr/local/bin/codex");
    }

    UsageCollectionRequest request{testing::fixedConnectionID(), dateFromUnixSeconds(1'795'000'000)};
    ScratchDirectory home;
    std::shared_ptr<FakeRunner> runner = std::make_shared<FakeRunner>();
};

TEST_F(CodexUsageProviderTest, NothingInstalledAnywhere) {
    if (!wellKnownLocationsAreEmpty()) {
        GTEST_SKIP() << "a codex is installed in a well-known location of this machine";
    }
    const auto subject = provider(home.path() / "not-there");
    const auto probe = subject.probe();
    EXPECT_EQ(probe.availability(), ProviderAvailability::notInstalled);
    EXPECT_TRUE(probe.capabilities().isEmpty());
    EXPECT_FALSE(probe.sourceVersion());
    EXPECT_TRUE(probe.diagnostics().empty());

    const auto collection = subject.collect(request);
    EXPECT_EQ(codes(collection.diagnostics()), std::vector<std::string>{"codex.not_installed"});
    EXPECT_EQ(collection.diagnostics()[0].severity(), DiagnosticSeverity::error);
    EXPECT_TRUE(collection.windows().empty() && collection.tokenBuckets().empty());
    EXPECT_TRUE(runner->recordedCalls().empty());
}

TEST_F(CodexUsageProviderTest, ProbeRunsVersionAndHelpConcurrentlyWithTheirLimits) {
    const auto fake = FakeCodex::shell("exit 0");
    runner->requireOverlap = true;
    const auto probe = provider(fake.executable()).probe();
    EXPECT_TRUE(runner->overlapped);
    EXPECT_EQ(probe.capabilities().rawValue(), 7);
    ASSERT_EQ(probe.diagnostics().size(), 1u);
    EXPECT_EQ(probe.diagnostics()[0].severity(), DiagnosticSeverity::info);
    EXPECT_EQ(probe.provider().id(), "app.gaugewell.codex.subscription");

    auto calls = runner->recordedCalls();
    ASSERT_EQ(calls.size(), 2u);
    std::sort(calls.begin(), calls.end(),
              [](const auto& a, const auto& b) { return a.arguments < b.arguments; });
    EXPECT_EQ(calls[0].arguments, (std::vector<std::string>{"--version"}));
    EXPECT_EQ(calls[0].timeout, std::chrono::seconds(3));
    EXPECT_EQ(calls[0].outputLimit, 16'384);
    EXPECT_EQ(calls[1].arguments, (std::vector<std::string>{"app-server", "--help"}));
    EXPECT_EQ(calls[1].timeout, std::chrono::seconds(3));
    EXPECT_EQ(calls[1].outputLimit, 65'536);
    for (const auto& call : calls) {
        EXPECT_EQ(call.executable, fake.executable());
    }
}

TEST_F(CodexUsageProviderTest, ProbeDecidesAvailabilityFromTheTwoRuns) {
    using enum ProviderAvailability;
    const auto failure = [](ProcessSupportError error) { return RunResult(unexpected(error)); };
    const RunResult help = CommandOutput{0, "Commands:\n  app-server  Run the app server\n", ""};
    struct Case {
        RunResult version;
        RunResult help;
        ProviderAvailability availability;
        std::optional<std::string> sourceVersion;
    };
    const std::vector<Case> cases{
        {CommandOutput{0, " codex-cli 0.169.0 \r\n", ""}, help, availableWithLimitations,
         "codex-cli 0.169.0"},
        {CommandOutput{0, "codex\xff 1\n", ""}, help, availableWithLimitations, "codex\xEF\xBF\xBD 1"},
        {CommandOutput{0, "codex-cli 0.1.0\n", ""}, CommandOutput{0, "Commands:\n  exec\n", "app-server"},
         unsupportedVersion, "codex-cli 0.1.0"},
        {CommandOutput{0, "codex-cli 0.1.0\n", ""}, CommandOutput{1, "app-server", ""}, unsupportedVersion,
         "codex-cli 0.1.0"},
        {CommandOutput{2, "codex-cli 0.1.0", ""}, help, unsupportedVersion, "codex-cli 0.1.0"},
        {CommandOutput{0, " \n", ""}, CommandOutput{0, "", ""}, unsupportedVersion, std::nullopt},
        {failure(ProcessSupportError::timedOut), help, temporarilyUnavailable, std::nullopt},
        {CommandOutput{0, "codex-cli 0.1.0", ""}, failure(ProcessSupportError::outputLimitExceeded),
         temporarilyUnavailable, std::nullopt},
    };
    const std::map<ProviderAvailability, std::vector<std::string>> codesFor{
        {availableWithLimitations, {"codex.experimental_protocol"}},
        {unsupportedVersion, {}},
        {temporarilyUnavailable, {"codex.probe_failed"}}};
    const auto fake = FakeCodex::shell("exit 0");
    for (std::size_t index = 0; index < cases.size(); ++index) {
        SCOPED_TRACE("case " + std::to_string(index));
        const auto& expected = cases[index];
        runner->version = expected.version;
        runner->help = expected.help;
        const auto probe = provider(fake.executable()).probe();
        EXPECT_EQ(probe.availability(), expected.availability);
        EXPECT_EQ(probe.sourceVersion(), expected.sourceVersion);
        EXPECT_EQ(codes(probe.diagnostics()), codesFor.at(expected.availability));
        EXPECT_EQ(probe.capabilities().isEmpty(), expected.availability != availableWithLimitations);
    }
}

TEST_F(CodexUsageProviderTest, ChildEnvironmentIsAllowListedWithTheToolFolderOnPath) {
    const auto subject = provider(
        std::nullopt, {{"PATH", "/usr/bin::/bin"}, {"LANG", "C.UTF-8"}, {"OPENAI_API_KEY", "secret"}});
    const auto environment = subject.childEnvironment("/opt/tools/codex");
    EXPECT_EQ(environment, (Environment{{"HOME", home.path().string()},
                                        {"LANG", "C.UTF-8"},
                                        {"PATH", "/opt/tools:/usr/bin::/bin"}}));

    const CodexUsageProvider withoutPath(std::nullopt, ExecutableLocator(), runner, home.path(),
                                         Environment{});
    // Nothing but the default search path, which holds the tool's folder already.
    EXPECT_EQ(withoutPath.childEnvironment("/usr/local/bin/codex"),
              (Environment{{"PATH", "/opt/homebrew/bin:/usr/local/bin:/usr/bin:/bin"}}));
}

// PATH, configured tools and the order among version folders are the locator's; this is the order
// among the sources the provider hands it.
TEST_F(CodexUsageProviderTest, NodeVersionManagerComesBeforePath) {
    if (!wellKnownLocationsAreEmpty()) {
        GTEST_SKIP() << "a codex is installed in a well-known location of this machine";
    }
    const auto onPath = FakeCodex::shell("exit 0");
    const auto bin = home.path() / ".nvm/versions/node/v22.3.0/bin";
    fs::create_directories(bin);
    fs::create_symlink(onPath.executable(), bin / "codex");
    EXPECT_EQ(provider(std::nullopt, {{"PATH", onPath.directory().string()}}).resolveExecutable(),
              bin / "codex");
}

// A signed-in app-server with two limits, answering usage before rate limits, with notifications.
// The mapping itself is the normalizer's; this is the one path from a process to a result.
constexpr std::string_view signedInServer = R"PY(
handshake()
send('{"method":"account/updated","params":{}}')
send('{"id":3,"result":{"dailyUsageBuckets":[{"startDate":"2026-11-20","tokens":1200},{"startDate":"2026-11-21","tokens":300}]}}')
send('{"method":"rateLimits/updated","params":{"secret":"sk-NOT-A-DIAGNOSTIC"}}')
send('{"id":2,"result":{"rateLimits":{"limitId":"codex","primary":{"usedPercent":1}},"rateLimitsByLimitId":{"codex_other":{"limitId":"codex_other","limitName":"GPT-5 Codex","primary":{"usedPercent":7,"windowDurationMins":300,"resetsAt":1795003600}},"codex":{"limitId":"codex","primary":{"usedPercent":42,"windowDurationMins":300,"resetsAt":1795001000},"secondary":{"usedPercent":13,"windowDurationMins":10080,"resetsAt":1795500000}}}}}')
finish()
)PY";

TEST_F(CodexUsageProviderTest, CollectsFromASignedInServer) {
    const auto fake = FakeCodex::python(signedInServer);
    const auto result = provider(fake.executable()).collect(request);
    EXPECT_TRUE(result.diagnostics().empty()) << ::testing::PrintToString(codes(result.diagnostics()));
    ASSERT_EQ(result.windows().size(), 3u);
    EXPECT_EQ(result.windows()[0].id(), "A115A6E0-337E-4F26-9809-6B2E75C39D01:codex.primary:1795000000");
    ASSERT_EQ(result.tokenBuckets().size(), 2u);
    EXPECT_EQ(result.windows()[0].sourceVersion(), "codex-cli 1.2.3");
    EXPECT_EQ(result.tokenBuckets()[0].sourceVersion(), "codex-cli 1.2.3");
    EXPECT_EQ(result.collectedAt(), request.observedAt());

    const auto calls = runner->recordedCalls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].arguments, std::vector<std::string>{"--version"});
    EXPECT_EQ(calls[0].timeout, std::chrono::seconds(5));
    EXPECT_EQ(calls[0].outputLimit, 16'384);
    EXPECT_EQ(calls[0].environment.at("PATH"),
              fake.directory().string() + ":" + (home.path() / "empty-bin").string());
}

TEST_F(CodexUsageProviderTest, FailingVersionRunLeavesTheVersionAbsent) {
    for (const RunResult& version :
         {RunResult(unexpected(ProcessSupportError::timedOut)),
          RunResult(CommandOutput{1, "codex-cli 1.2.3", ""}), RunResult(CommandOutput{0, "\n\t ", ""})}) {
        const auto fake = FakeCodex::python(signedInServer);
        runner->version = version;
        const auto result = provider(fake.executable()).collect(request);
        ASSERT_EQ(result.windows().size(), 3u);
        EXPECT_FALSE(result.windows()[0].sourceVersion());
        EXPECT_FALSE(result.hasErrorDiagnostic());
    }
}

TEST_F(CodexUsageProviderTest, FailedExchangeReportsOneFixedErrorAndNoOutput) {
    // After the handshake, with secrets where the tool's text could leak.
    const std::vector<std::pair<std::string, std::string>> cases{
        {R"(send('{"id":2,"error":{"code":-32600,"message":"sk-123"}}'))", "codex.rpc_error"},
        {R"(send('{"id":2}'); send('{"id":3,"result":{}}'))", "codex.protocol_error"},
        {R"(send('{"id":2,"result":{"sk-x":{}}}'); send('{"id":3,"result":{}}'))", "codex.schema_error"}};
    for (const auto& [script, code] : cases) {
        SCOPED_TRACE(code);
        const auto fake = FakeCodex::python("handshake()\n" + script + "\nfinish()");
        const auto result = provider(fake.executable()).collect(request);
        EXPECT_TRUE(result.windows().empty() && result.tokenBuckets().empty());
        ASSERT_EQ(codes(result.diagnostics()), std::vector<std::string>{code});
        EXPECT_EQ(result.diagnostics()[0].severity(), DiagnosticSeverity::error);
        EXPECT_EQ(result.diagnostics()[0].message().find("sk-"), std::string::npos);
        EXPECT_EQ(result.provider(), codexProviderDescriptor());
        EXPECT_EQ(result.collectedAt(), request.observedAt());
    }
}

} // namespace
} // namespace gaugewell
