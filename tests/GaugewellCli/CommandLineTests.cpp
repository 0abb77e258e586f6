#include "AuthenticationFakes.h"
#include "ModelFakes.h"
#include "Platform/InMemoryUserDefaults.h"
#include "Platform/SettingsKeys.h"
#include "QtTestSupport.h"
#include "RecordFixtures.h"
#include "TemporaryDirectory.h"
#include "UsageDomain/JsonValue.h"
#include "ViewStateFixtures.h"
#include "WidgetFeedTestSupport.h"
#include "app/CommandLine.h"
#include "app/CommandTable.h"
#include "app/ProviderReport.h"

#include <QTimer>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <gtest/gtest.h>
#include <mutex>
#include <sstream>
#include <unistd.h>

namespace gaugewell {
namespace {

using testing::referencePlus;

class ScriptedProvider : public GaugewellProvider {
public:
    ProviderDescriptor descriptor_{"app.gaugewell.codex.subscription", "Codex", std::nullopt};
    std::vector<ProviderDiagnostic> diagnostics;
    std::vector<UsageWindowSample> windows;
    ProviderAvailability availability = ProviderAvailability::availableWithLimitations;

    const ProviderDescriptor& descriptor() const override { return descriptor_; }
    ProviderProbeResult probe() const noexcept override {
        return ProviderProbeResult(descriptor_, availability,
                                   {ProviderCapabilities::currentWindows, ProviderCapabilities::resetTimes},
                                   "codex-cli 0.169.0", diagnostics);
    }
    ProviderCollectionResult collect(const UsageCollectionRequest& request) const noexcept override {
        return ProviderCollectionResult(descriptor_, request.observedAt(), windows, {}, diagnostics);
    }
};

class CommandLineTest : public ::testing::Test {
protected:
    void SetUp() override {
        ::setenv("TZ", "UTC", 1);
        ::tzset();
    }

    std::shared_ptr<ScriptedProvider> provider = std::make_shared<ScriptedProvider>();
    std::shared_ptr<testing::FakeClaude> claude = std::make_shared<testing::FakeClaude>();
    std::shared_ptr<InMemoryUserDefaults> defaults = std::make_shared<InMemoryUserDefaults>();
    // No codex anywhere: the Codex answers are the not-installed ones.
    std::shared_ptr<ProviderAuthenticationManager> manager = std::make_shared<ProviderAuthenticationManager>(
        ProviderAuthenticationManager::Dependencies{ExecutableLocator(),
                                                    std::make_shared<testing::FakeCommandRunner>(),
                                                    "/nonexistent",
                                                    {},
                                                    defaults,
                                                    "connections.oauth-authorized.v2",
                                                    claude,
                                                    std::make_shared<testing::FakeCodexSession>(),
                                                    Environment{{"PATH", "/nonexistent"}}});
    Date now = referencePlus(800'000'000);

    int run(std::vector<std::string> arguments) {
        out.str("");
        err.str("");
        const CommandLine commandLine({
            [this](std::string_view service) -> std::shared_ptr<const GaugewellProvider> {
                return service == "codex" ? provider : nullptr;
            },
            [this] { return manager; },
            [this] { return now; },
            [this] { return defaults; },
            [this](UsageAppModel::RefreshHooks hooks) {
                return std::make_unique<UsageAppModel>(
                    UsageAppModel::Dependencies{modelAuthentication,
                                                {codexCollector, claudeCollector},
                                                defaults,
                                                std::move(hooks),
                                                [this] { return now; }});
            },
            [this] { return widgetAnswer; },
            [this](const std::optional<ApplicationRequest>& request) -> Status<RunningInstanceError> {
                askedOfInstance.push_back(request);
                return unexpected(RunningInstanceError::notRunning);
            },
        });
        return commandLine.run(arguments, out, err);
    }

    std::ostringstream out;
    std::ostringstream err;
    std::vector<std::optional<ApplicationRequest>> askedOfInstance;
    // What the model-backed commands (status, report, daemon) and `widget` see.
    std::shared_ptr<testing::SettableAuthentication> modelAuthentication =
        std::make_shared<testing::SettableAuthentication>();
    std::shared_ptr<testing::FixedCollector> codexCollector =
        std::make_shared<testing::FixedCollector>(ProviderService::codex);
    std::shared_ptr<testing::FixedCollector> claudeCollector =
        std::make_shared<testing::FixedCollector>(ProviderService::claude);
    WidgetFetchResult widgetAnswer = WidgetFetchError(WidgetTransportError::cannotConnect);
};

TEST_F(CommandLineTest, CollectJsonIsOneObjectWithTheRecordsInKeyedForm) {
    provider->windows = {testing::fullSample()};
    provider->diagnostics = {
        ProviderDiagnostic(DiagnosticSeverity::warning, "codex.invalid_window", "Skipped.")};
    EXPECT_EQ(run({"collect", "codex", "--json"}), CommandLine::success);
    const auto json = parseJson(out.str());
    ASSERT_TRUE(json.hasValue()) << out.str();
    EXPECT_EQ(*json->find("windows")->arrayValue()->at(0).find("usedFraction")->numberLiteralText(), "0.415");
    EXPECT_EQ(json->find("collectedAt")->doubleValue(), 800'000'000.0);
    EXPECT_EQ(*json->find("diagnostics")->arrayValue()->at(0).find("code")->stringValue(),
              "codex.invalid_window");
}

TEST_F(CommandLineTest, CollectExitsOneOnlyWithAnErrorDiagnostic) {
    provider->diagnostics = {ProviderDiagnostic(DiagnosticSeverity::info, "codex.x", "Fine.")};
    EXPECT_EQ(run({"collect", "codex"}), CommandLine::success);
    provider->diagnostics.emplace_back(DiagnosticSeverity::error, "codex.rpc_error", "Codex refused.");
    EXPECT_EQ(run({"collect", "codex"}), CommandLine::failure);
    EXPECT_NE(out.str().find("error codex.rpc_error: Codex refused.\n"), std::string::npos) << out.str();
}

TEST_F(CommandLineTest, CollectTextShowsWindowUsedResetAndSource) {
    provider->windows = {testing::fullSample()}; // resets 8000 s after `now`
    run({"collect", "codex"});
    EXPECT_NE(out.str().find("5-hour limit"), std::string::npos) << out.str();
    EXPECT_NE(out.str().find(" 42%"), std::string::npos) << out.str();
    EXPECT_NE(out.str().find("2026-05-09 08:26"), std::string::npos) << out.str();
    EXPECT_NE(out.str().find("(in 2h 13m)"), std::string::npos) << out.str();
    EXPECT_NE(out.str().find("Codex app-server"), std::string::npos) << out.str();
}

TEST_F(CommandLineTest, ProbeJsonIsTheProbeResultsKeyedForm) {
    EXPECT_EQ(run({"probe", "--json", "codex"}), CommandLine::success);
    EXPECT_EQ(out.str(), R"({"provider":{"id":"app.gaugewell.codex.subscription","displayName":"Codex"},)"
                         R"("availability":"availableWithLimitations","capabilities":3,)"
                         R"("sourceVersion":"codex-cli 0.169.0","diagnostics":[]})"
                         "\n");
    provider->availability = ProviderAvailability::notInstalled;
    EXPECT_EQ(run({"probe", "codex"}), CommandLine::failure);
    EXPECT_NE(out.str().find("Codex: notInstalled"), std::string::npos);
}

TEST_F(CommandLineTest, UsageErrorsExitTwo) {
    for (const auto& arguments : std::vector<std::vector<std::string>>{{"collect"},
                                                                       {"collect", "gemini"},
                                                                       {"collect", "codex", "--yaml"},
                                                                       {"probe", "codex", "claude"},
                                                                       {"frobnicate"}}) {
        EXPECT_EQ(run(arguments), CommandLine::usageError) << arguments.size();
        EXPECT_FALSE(err.str().empty());
    }
}

TEST_F(CommandLineTest, AccountsListsBothServicesInOrder) {
    EXPECT_EQ(run({"accounts"}), CommandLine::success);
    EXPECT_EQ(out.str(), "Codex: notInstalled \u2014 Command-line tool not found\n"
                         "Claude: signedOut \u2014 Claude sign-in required\n");
    EXPECT_EQ(run({"accounts", "--json"}), CommandLine::success);
    EXPECT_EQ(out.str(),
              R"([{"service":"codex","status":"notInstalled","detail":"Command-line tool not found"},)"
              R"({"service":"claude","status":"signedOut","detail":"Claude sign-in required"}])"
              "\n");
}

TEST_F(CommandLineTest, ConnectAndDisconnectReportTheResultingState) {
    EXPECT_EQ(run({"connect", "claude"}), CommandLine::failure);
    EXPECT_NE(out.str().find("Claude: failed \u2014 Claude sign-in was not completed"), std::string::npos)
        << out.str();
    claude->loginSucceeds = true;
    EXPECT_EQ(run({"connect", "claude"}), CommandLine::success);
    EXPECT_NE(out.str().find("Claude: signedIn"), std::string::npos);
    EXPECT_EQ(run({"disconnect", "claude"}), CommandLine::success);
    EXPECT_NE(out.str().find("Tokens revoked and removed from the keyring"), std::string::npos);
    EXPECT_EQ(run({"connect", "codex"}), CommandLine::failure);
    EXPECT_EQ(run({"connect", "gemini"}), CommandLine::usageError);
    EXPECT_EQ(run({"disconnect"}), CommandLine::usageError);
}

TEST_F(CommandLineTest, CtrlCCancelsASignInInProgress) {
    // A sign-in that waits until it is cancelled, as the real ones do.
    class WaitingClaude : public testing::FakeClaude {
    public:
        std::mutex mutex;
        std::condition_variable cancelled;
        bool wasCancelled = false;
        bool login() override {
            ::kill(::getpid(), SIGINT); // the user presses Ctrl-C while the browser is open
            std::unique_lock lock(mutex);
            return !cancelled.wait_for(lock, std::chrono::seconds(10), [&] { return wasCancelled; });
        }
        void cancelLogin() override {
            const std::lock_guard lock(mutex);
            wasCancelled = true;
            cancelled.notify_all();
        }
    };
    auto waiting = std::make_shared<WaitingClaude>();
    manager = std::make_shared<ProviderAuthenticationManager>(
        ProviderAuthenticationManager::Dependencies{ExecutableLocator(),
                                                    std::make_shared<testing::FakeCommandRunner>(),
                                                    "/nonexistent",
                                                    {},
                                                    defaults,
                                                    "connections.oauth-authorized.v2",
                                                    waiting,
                                                    std::make_shared<testing::FakeCodexSession>(),
                                                    Environment{{"PATH", "/nonexistent"}}});
    EXPECT_EQ(run({"connect", "claude"}), CommandLine::failure);
    EXPECT_EQ(err.str(), "Sign-in cancelled.\n");
    EXPECT_TRUE(waiting->wasCancelled);
}

TEST_F(CommandLineTest, ShowAndQuitAskTheRunningInstanceAndSayWhenThereIsNone) {
    for (const std::vector<std::string>& wrong : {std::vector<std::string>{"show"},
                                                  {"show", "window"},
                                                  {"show", "dashboard", "general"},
                                                  {"show", "settings", "privacy"},
                                                  {"quit", "now"}}) {
        EXPECT_EQ(run(wrong), CommandLine::usageError) << wrong[0] << ' ' << wrong.back();
    }
    EXPECT_TRUE(askedOfInstance.empty());

    EXPECT_EQ(run({"show", "settings", "menuBar"}), CommandLine::failure);
    EXPECT_EQ(err.str(), "gaugewell: Gaugewell is not running\n");
    EXPECT_EQ(run({"quit"}), CommandLine::failure);
    ASSERT_EQ(askedOfInstance.size(), 2u);
    EXPECT_EQ(askedOfInstance[0],
              (ApplicationRequest{ApplicationAction::settings, SettingsDestination::menuBar}));
    EXPECT_EQ(askedOfInstance[1], (ApplicationRequest{ApplicationAction::quit, std::nullopt}));
}

TEST_F(CommandLineTest, ConfigChecksTypeAndRangeAndChangesNothingOnAWrongValue) {
    EXPECT_EQ(run({"config", "set", "notifications.enabled", "yes"}), CommandLine::success);
    EXPECT_EQ(defaults->storedBool(std::string(settingsKey::notificationsEnabled)), true);
    EXPECT_EQ(run({"config", "set", "advanced.refreshIdleSeconds", "1200"}), CommandLine::success);

    const std::vector<std::vector<std::string>> wrong{
        {"config", "set", "notifications.enabled", "maybe"},
        {"config", "set", "advanced.refreshIdleSeconds", "60"},
        {"config", "set", "advanced.refreshIdleSeconds", "10min"},
        {"config", "set", "menu.density", "roomy"},
        {"config", "set", "menu.colour", "blue"},
        {"config", "set", "menu.density"},
    };
    for (const auto& arguments : wrong) {
        EXPECT_EQ(run(arguments), CommandLine::usageError) << arguments[2];
    }
    EXPECT_EQ(err.str(), "Usage: gaugewell config [get KEY | set KEY VALUE | reset KEY]\n");
    EXPECT_EQ(run({"config", "set", "advanced.refreshIdleSeconds", "60"}), CommandLine::usageError);
    EXPECT_EQ(err.str(), "gaugewell: advanced.refreshIdleSeconds: the value is out of range (300..3600)\n");
    EXPECT_EQ(defaults->doubleValue(settingsKey::refreshIdleSeconds), 1200);

    EXPECT_EQ(run({"config", "get", "advanced.refreshIdleSeconds"}), CommandLine::success);
    EXPECT_EQ(out.str(), "1200\n");
    EXPECT_EQ(run({"config", "reset", "advanced.refreshIdleSeconds"}), CommandLine::success);
    EXPECT_EQ(run({"config", "get", "advanced.refreshIdleSeconds"}), CommandLine::success);
    EXPECT_EQ(out.str(), "600\n");
    EXPECT_EQ(run({"config"}), CommandLine::success);
    EXPECT_NE(out.str().find("true            (default false)  [true|false]"), std::string::npos);
}

TEST_F(CommandLineTest, EveryCommandInTheTableRunsAndIsInTheManualAndTheCompletions) {
    const std::string manual = manualPage("1.0");
    const std::string bash = bashCompletion();
    const std::string zsh = zshCompletion();
    EXPECT_EQ(run({"--version"}), CommandLine::success);
    EXPECT_EQ(out.str().rfind("gaugewell ", 0), 0u);
    for (const auto& command : commandTable()) {
        const std::string name(command.name);
        EXPECT_EQ(run({name, "--help"}), CommandLine::success) << name;
        EXPECT_NE(out.str().find("Usage: gaugewell " + name), std::string::npos) << name;
        EXPECT_NE(CommandLine::usage().find("  " + name), std::string::npos) << name;
        EXPECT_NE(manual.find(".B " + name), std::string::npos) << name;
        EXPECT_NE(bash.find("    " + name + ")"), std::string::npos) << name;
        EXPECT_NE(zsh.find("'" + name + ":"), std::string::npos) << name;
    }
}

TEST_F(CommandLineTest, StatusShowsEachServicesWindowsAndItsJsonIsTheFeedsSnapshot) {
    const double observed = 800'000'000 - 60;
    codexCollector->set({testing::windowSample(
        {.used = "0.285", .observedAt = observed, .resetAt = 800'000'000 + 2 * 3600 + 600})});
    modelAuthentication->set(ProviderService::claude, ProviderConnectionStatus::signedOut, "Signed out");

    ASSERT_EQ(run({"status"}), CommandLine::success) << err.str();
    EXPECT_NE(out.str().find("Codex: availableWithLimitations"), std::string::npos) << out.str();
    EXPECT_NE(out.str().find("  Five-hour: 29% used, resets "), std::string::npos) << out.str();
    EXPECT_NE(out.str().find("(in 2 hr.)"), std::string::npos) << out.str();
    EXPECT_NE(out.str().find("Claude: authenticationRequired (Signed out)"), std::string::npos) << out.str();

    ASSERT_EQ(run({"status", "--json"}), CommandLine::success) << err.str();
    const auto snapshot = WidgetUsageSnapshot::decode(out.str());
    ASSERT_TRUE(snapshot) << out.str();
    ASSERT_EQ(snapshot.value().providers().size(), 2u);
    EXPECT_EQ(snapshot.value().providers()[0].windows().at(0).usedFraction(), 0.285);
    EXPECT_EQ(snapshot.value().providers()[1].state(), WidgetProviderState::signInRequired);
}

TEST_F(CommandLineTest, WidgetWithTheFeedDownStillGivesWaybarOneLineOnStandardOutput) {
    EXPECT_EQ(run({"widget", "--format", "waybar"}), CommandLine::failure);
    const auto line = parseJson(out.str());
    ASSERT_TRUE(line) << out.str();
    EXPECT_EQ(*line->find("class")->stringValue(), "unavailable");
    EXPECT_EQ(err.str(), "");

    EXPECT_EQ(run({"widget"}), CommandLine::failure);
    EXPECT_EQ(out.str(), "");
    EXPECT_NE(err.str().find("gaugewell: "), std::string::npos);

    widgetAnswer = WidgetUsageSnapshot(now, {});
    EXPECT_EQ(run({"widget", "--format=json"}), CommandLine::success);
    EXPECT_TRUE(WidgetUsageSnapshot::decode(out.str())) << out.str();
}

TEST_F(CommandLineTest, ReportIsWrittenAfterARefreshOrTheFailureIsSaid) {
    const testing::TemporaryDirectory folder;
    const auto path = (folder.path() / "report.txt").string();
    ASSERT_EQ(run({"report", path}), CommandLine::success) << err.str();
    EXPECT_EQ(out.str(), "Diagnostics report written to " + path + "\n");
    EXPECT_GT(std::filesystem::file_size(path), 0u);

    EXPECT_EQ(run({"report", (folder.path() / "missing" / "report.txt").string()}), CommandLine::failure);
    EXPECT_NE(err.str().find("gaugewell: "), std::string::npos);
}

TEST_F(CommandLineTest, DaemonServesTheFeedOnLoopbackUntilTerminated) {
    testing::coreApplication();
    // A free port, so that a developer's running Gaugewell does not hold it.
    ::setenv("GAUGEWELL_WIDGET_PORT", std::to_string(testing::unusedLoopbackPort()).c_str(), 1);
    QTimer::singleShot(300, [] { ::raise(SIGTERM); });
    EXPECT_EQ(run({"daemon"}), CommandLine::success) << err.str();
    ::unsetenv("GAUGEWELL_WIDGET_PORT");
    EXPECT_NE(out.str().find("widget feed at http://127.0.0.1:"), std::string::npos)
        << out.str() << err.str();
}

TEST(ProviderReport, UsedPercentFallsBackToRemaining) {
    const auto withFractions = [](std::optional<Decimal> used, std::optional<Decimal> remaining) {
        return UsageWindowSample("s", Uuid(), "b", std::nullopt, UsageWindowKind::fiveHour, std::nullopt,
                                 Date(), std::nullopt, std::nullopt, std::nullopt, std::nullopt, std::nullopt,
                                 used, remaining, std::nullopt, std::nullopt, std::nullopt,
                                 MeasurementAuthority::vendorAuthoritative, MeasurementConfidence::exact,
                                 MeasurementCoverage::account, MeasurementFreshness::live,
                                 testing::testSource(), std::nullopt);
    };
    EXPECT_EQ(ProviderReport::usedPercentText(withFractions(Decimal::parse("0.125"), std::nullopt)), "13%");
    EXPECT_EQ(ProviderReport::usedPercentText(withFractions(std::nullopt, Decimal::parse("0.25"))), "75%");
    EXPECT_EQ(ProviderReport::usedPercentText(withFractions(std::nullopt, std::nullopt)), "-");
}

TEST(ProviderReport, RelativeTimes) {
    const Date now = referencePlus(1000);
    EXPECT_EQ(ProviderReport::relativeText(referencePlus(999), now), "now");
    EXPECT_EQ(ProviderReport::relativeText(referencePlus(1045), now), "in 45s");
    EXPECT_EQ(ProviderReport::relativeText(referencePlus(1000 + 7980), now), "in 2h 13m");
    EXPECT_EQ(ProviderReport::relativeText(referencePlus(1000 + 3 * 86400 + 7200), now), "in 3d 2h");
}

} // namespace
} // namespace gaugewell
