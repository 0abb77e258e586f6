#include "GaugewellUI/Model/UsageAppModel.h"
#include "ManualClock.h"
#include "ModelFakes.h"
#include "Platform/InMemoryUserDefaults.h"
#include "QtTestSupport.h"
#include "RecordFixtures.h"

#include <QTest>
#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <mutex>
#include <thread>

namespace gaugewell {
namespace {

using testing::ManualClock;
using Connection = ProviderConnectionStatus;

class ScriptedCollector : public GaugewellProvider {
public:
    explicit ScriptedCollector(std::string id, std::string name)
        : descriptor_(std::move(id), std::move(name), std::nullopt) {}
    const ProviderDescriptor& descriptor() const override { return descriptor_; }
    ProviderProbeResult probe() const noexcept override {
        return ProviderProbeResult(descriptor_, ProviderAvailability::available, {}, std::nullopt, {});
    }
    ProviderCollectionResult collect(const UsageCollectionRequest& request) const noexcept override {
        ++collections;
        while (held) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        std::vector<UsageWindowSample> windows;
        if (!failing) {
            windows.push_back(UsageWindowSample(
                "w", request.connectionID(), "primary", std::nullopt, UsageWindowKind::fiveHour, std::nullopt,
                request.observedAt(), std::nullopt, 18000, std::nullopt, std::nullopt, std::nullopt,
                Decimal::parse("0.42"), std::nullopt, std::nullopt, std::nullopt, std::nullopt,
                MeasurementAuthority::vendorAuthoritative, MeasurementConfidence::exact,
                MeasurementCoverage::account, MeasurementFreshness::live, testing::testSource(),
                std::nullopt));
        }
        std::vector<ProviderDiagnostic> diagnostics;
        if (failing) {
            diagnostics.emplace_back(DiagnosticSeverity::error, "codex.rpc_error", "Refused.");
        }
        return ProviderCollectionResult(descriptor_, request.observedAt(), windows, {}, diagnostics);
    }
    std::atomic<bool> failing{false};
    std::atomic<bool> held{false};
    mutable std::atomic<int> collections{0};

private:
    ProviderDescriptor descriptor_;
};

class UsageAppModelTest : public ::testing::Test {
protected:
    void SetUp() override {
        testing::coreApplication();
        ::setenv("LANG", "en_US.UTF-8", 1);
        authentication->set(ProviderService::claude, Connection::signedOut, "Claude sign-in required");
    }

    UsageAppModel& model() {
        if (!instance) {
            instance = std::make_unique<UsageAppModel>(UsageAppModel::Dependencies{
                authentication, {codex, claude}, defaults, {}, [this] { return clock.now(); }});
        }
        return *instance;
    }
    void refresh(RefreshTrigger trigger) { ASSERT_TRUE(testing::waitForFuture(model().refresh(trigger))); }
    const ProviderViewState& state(ProviderService service) {
        for (const auto& provider : model().providers()) {
            if (provider.service == service) {
                return provider;
            }
        }
        throw std::runtime_error("no view state for the service");
    }

    std::shared_ptr<testing::SettableAuthentication> authentication =
        std::make_shared<testing::SettableAuthentication>();
    std::shared_ptr<ScriptedCollector> codex =
        std::make_shared<ScriptedCollector>("app.gaugewell.codex.subscription", "Codex");
    std::shared_ptr<ScriptedCollector> claude =
        std::make_shared<ScriptedCollector>("app.gaugewell.claude.subscription", "Claude");
    std::shared_ptr<InMemoryUserDefaults> defaults = std::make_shared<InMemoryUserDefaults>();
    ManualClock clock;
    std::unique_ptr<UsageAppModel> instance;
};

TEST_F(UsageAppModelTest, StartRefreshesAtOnceAndThenWheneverARefreshIsDue) {
    instance = std::make_unique<UsageAppModel>(UsageAppModel::Dependencies{authentication,
                                                                           {codex, claude},
                                                                           defaults,
                                                                           {},
                                                                           [this] { return clock.now(); },
                                                                           std::chrono::milliseconds(10)});
    model().start();
    ASSERT_TRUE(QTest::qWaitFor([this] { return codex->collections == 1 && !model().isRefreshing(); }, 5000));
    QTest::qWait(50);
    EXPECT_EQ(codex->collections, 1) << "not due yet";
    clock.advance(11 * 60);
    EXPECT_TRUE(QTest::qWaitFor([this] { return codex->collections == 2 && !model().isRefreshing(); }, 5000));
}

// The timer is armed for the moment the interval runs out; a shorter interval re-arms it at once.
TEST_F(UsageAppModelTest, AShorterIntervalThatMakesARefreshDueRefreshesAtOnce) {
    model().start();
    ASSERT_TRUE(QTest::qWaitFor([this] { return codex->collections == 1 && !model().isRefreshing(); }, 5000));
    clock.advance(130); // due while interactive (120 s), not while idle (600 s)
    QTest::qWait(50);
    EXPECT_EQ(codex->collections, 1);
    model().setInteractive(true);
    ASSERT_TRUE(QTest::qWaitFor([this] { return codex->collections == 2 && !model().isRefreshing(); }, 5000));

    model().setInteractive(false);
    clock.advance(130);
    QTest::qWait(50);
    EXPECT_EQ(codex->collections, 2);
    defaults->set("advanced.refreshIdleSeconds", 120.0);
    EXPECT_TRUE(QTest::qWaitFor([this] { return codex->collections == 3; }, 5000));
}

TEST_F(UsageAppModelTest, RefreshIntervalsNeverGoBelowTwoMinutes) {
    model().setInteractive(true);
    EXPECT_EQ(model().refreshInterval(), std::chrono::seconds(120));
    for (const auto& [stored, expected] :
         std::vector<std::pair<double, int>>{{30, 120}, {300, 300}, {-5, 120}}) {
        defaults->set("advanced.refreshActiveSeconds", stored);
        EXPECT_EQ(model().refreshInterval(), std::chrono::seconds(expected)) << stored;
    }
    model().setInteractive(false);
    EXPECT_EQ(model().refreshInterval(), std::chrono::seconds(600));
    defaults->set("advanced.refreshIdleSeconds", 900.0);
    EXPECT_EQ(model().refreshInterval(), std::chrono::seconds(900));
}

TEST_F(UsageAppModelTest, SignedInCollectionIsAvailableWithLimitationsAndSignedOutNeedsSignIn) {
    refresh(RefreshTrigger::manual);
    ASSERT_EQ(model().providers().size(), 2u);
    EXPECT_EQ(model().providers()[0].service, ProviderService::codex);
    EXPECT_EQ(state(ProviderService::codex).availability, ProviderAvailability::availableWithLimitations);
    EXPECT_EQ(state(ProviderService::codex).capabilities,
              (ProviderCapabilities{ProviderCapabilities::currentWindows, ProviderCapabilities::resetTimes}));
    const auto& signedOut = state(ProviderService::claude);
    EXPECT_EQ(signedOut.availability, ProviderAvailability::authenticationRequired);
    ASSERT_EQ(signedOut.diagnostics.size(), 1u);
    EXPECT_EQ(signedOut.diagnostics[0],
              ProviderDiagnostic(DiagnosticSeverity::warning, "claude.authentication_required",
                                 "Claude sign-in required"));
    EXPECT_EQ(claude->collections, 0); // gated: the collector is never asked
    EXPECT_EQ(model().connectionState(ProviderService::claude).status, Connection::signedOut);
    EXPECT_EQ(model().lastUpdatedAt(), clock.now());
    EXPECT_FALSE(model().isRefreshing());

    // Signed out is a warning, never a failure: a scheduled refresh is not held back for it.
    clock.advance(1);
    refresh(RefreshTrigger::scheduled);
    EXPECT_EQ(state(ProviderService::claude).availability, ProviderAvailability::authenticationRequired);
    EXPECT_EQ(state(ProviderService::claude).diagnostics[0].code(), "claude.authentication_required");
}

TEST_F(UsageAppModelTest, ProviderInBackoffShowsTheRetryTimeAndNoOldWindows) {
    refresh(RefreshTrigger::manual);
    ASSERT_EQ(state(ProviderService::codex).windows.size(), 1u);
    codex->failing = true;
    for (int failure = 0; failure < 3; ++failure) { // 30, 60, then 120 s of backoff
        refresh(RefreshTrigger::manual);
    }
    refresh(RefreshTrigger::scheduled);
    const auto& held = state(ProviderService::codex);
    EXPECT_EQ(held.availability, ProviderAvailability::temporarilyUnavailable);
    EXPECT_TRUE(held.windows.empty());
    ASSERT_EQ(held.diagnostics.size(), 1u);
    EXPECT_EQ(held.diagnostics[0].code(), "codex.refresh_backoff");
    EXPECT_EQ(held.diagnostics[0].message(), "The last refresh failed. Retrying in 2 min. — or refresh now.");
    EXPECT_EQ(codex->collections, 4);
}

TEST_F(UsageAppModelTest, RefreshIfDueWaitsForTheInterval) {
    refresh(RefreshTrigger::manual);
    EXPECT_EQ(codex->collections, 1);
    clock.advance(599);
    ASSERT_TRUE(testing::waitForFuture(model().refreshIfDue()));
    EXPECT_EQ(codex->collections, 1);
    clock.advance(1);
    ASSERT_TRUE(testing::waitForFuture(model().refreshIfDue()));
    EXPECT_EQ(codex->collections, 2);
}

TEST_F(UsageAppModelTest, OneSignInAtATime) {
    authentication->holdLogins = true;
    auto claudeSignIn = model().connectService(ProviderService::claude);
    EXPECT_EQ(model().authenticationAction(), ProviderService::claude);
    EXPECT_EQ(model().connectionState(ProviderService::claude).status, Connection::connecting);
    auto codexSignIn = model().connectService(ProviderService::codex);
    EXPECT_TRUE(codexSignIn.isFinished());
    authentication->release();
    ASSERT_TRUE(testing::waitForFuture(claudeSignIn));
    EXPECT_EQ(authentication->logins[ProviderService::codex], 0);
    EXPECT_FALSE(model().authenticationAction().has_value());
    // A completed sign-in refreshes at once.
    EXPECT_EQ(model().connectionState(ProviderService::claude).status, Connection::signedIn);
    EXPECT_EQ(claude->collections, 1);
}

TEST_F(UsageAppModelTest, SignOutShowsTheSignInPromptUntilTheNextRefresh) {
    refresh(RefreshTrigger::manual);
    ASSERT_TRUE(testing::waitForFuture(model().disconnectService(ProviderService::codex)));
    EXPECT_EQ(model().connectionState(ProviderService::codex).status, Connection::signedOut);
    const auto& codexState = state(ProviderService::codex);
    EXPECT_EQ(codexState.availability, ProviderAvailability::authenticationRequired);
    EXPECT_TRUE(codexState.windows.empty());
    EXPECT_EQ(codexState.diagnostics[0].message(), "Sign in to access this account's usage.");
}

TEST_F(UsageAppModelTest, GoesAwayWhileARefreshIsInFlight) {
    codex->held = true;
    std::optional<bool> answer;
    model().afterRecentRefresh(std::chrono::seconds(60), [&](bool refreshed) { answer = refreshed; });
    ASSERT_TRUE(QTest::qWaitFor([this] { return codex->collections == 1; }, 5000));
    instance.reset();
    EXPECT_EQ(answer, false);
    codex->held = false;
    QTest::qWait(100); // the continuations find their context gone
}

// What the widget feed asks: a widget polling every second for 100 s costs at most two collections,
// and none of a provider that is backing off.
TEST_F(UsageAppModelTest, RecentRefreshesAreReusedAndBackoffIsKept) {
    authentication->set(ProviderService::claude, Connection::signedIn, "Claude account");
    codex->failing = true;
    for (int failures = 0; failures < 3; ++failures) { // backing off for 120 s now
        refresh(RefreshTrigger::manual);
    }
    for (int second = 1; second <= 100; ++second) {
        clock.advance(1);
        std::optional<bool> answer;
        model().afterRecentRefresh(std::chrono::seconds(60), [&](bool refreshed) { answer = refreshed; });
        ASSERT_TRUE(QTest::qWaitFor([&] { return answer.has_value(); }, 5000));
        EXPECT_TRUE(*answer);
    }
    EXPECT_EQ(codex->collections, 3);
    EXPECT_EQ(claude->collections, 3 + 1);
}

TEST(ProviderStateAssembler, HistorySumsPerLocalDayAndSkipsDaysWithoutTotals) {
    ::setenv("TZ", "Europe/Berlin", 1);
    ::tzset();
    const auto bucket = [](double start, std::optional<std::int64_t> total) {
        return TokenUsageBucket("b", testing::fixedConnectionID(), dateFromUnixSeconds(start),
                                dateFromUnixSeconds(start + 3600), "gregorian", "UTC", std::nullopt,
                                std::nullopt, std::nullopt, std::nullopt, std::nullopt, total,
                                MeasurementAuthority::vendorAuthoritative, MeasurementConfidence::exact,
                                MeasurementCoverage::device, testing::testSource(), std::nullopt);
    };
    // 2026-11-20 23:30 UTC is already the 21st in Berlin.
    const double lateOn20thUtc = 1'795'649'400;
    ProviderViewState claude{ProviderService::claude,
                             ProviderDescriptor("app.gaugewell.claude.subscription", "Claude", std::nullopt),
                             ProviderAvailability::availableWithLimitations,
                             {},
                             {},
                             {bucket(lateOn20thUtc, 100), bucket(lateOn20thUtc + 7200, 250),
                              bucket(lateOn20thUtc + 3600, std::nullopt),
                              bucket(lateOn20thUtc + 86400, std::nullopt)},
                             {}};
    const auto points = ProviderStateAssembler::history({claude});
    ASSERT_EQ(points.size(), 1u);
    EXPECT_EQ(points[0].tokens, 350);
    EXPECT_EQ(points[0].providerName, "Claude");
    EXPECT_EQ(points[0].date, dateFromUnixSeconds(1'795'647'600)); // 2026-11-21 00:00 in Berlin
    EXPECT_EQ(points[0].id, "app.gaugewell.claude.subscription:1795647600");
    ::unsetenv("TZ");
    ::tzset();
}

} // namespace
} // namespace gaugewell
