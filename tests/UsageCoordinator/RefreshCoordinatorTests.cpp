#include "ManualClock.h"
#include "UsageCoordinator/RefreshCoordinator.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace gaugewell {
namespace {

using namespace std::chrono_literals;
using testing::ManualClock;

const std::string codexID = "app.gaugewell.codex.subscription";
const std::string claudeID = "app.gaugewell.claude.subscription";

// A one-shot signal with a bounded wait, so a broken coordinator fails a test instead of hanging it.
class Signal {
public:
    void raise() {
        const std::lock_guard lock(mutex);
        raised = true;
        condition.notify_all();
    }
    bool wait(std::chrono::seconds limit = 10s) {
        std::unique_lock lock(mutex);
        return condition.wait_for(lock, limit, [&] { return raised; });
    }

private:
    std::mutex mutex;
    std::condition_variable condition;
    bool raised = false;
};

class FakeProvider : public GaugewellProvider {
public:
    explicit FakeProvider(std::string id)
        : descriptor_(std::move(id), "Fake", std::nullopt) {}

    const ProviderDescriptor& descriptor() const override { return descriptor_; }
    ProviderProbeResult probe() const noexcept override {
        return ProviderProbeResult(descriptor_, ProviderAvailability::available, {}, std::nullopt, {});
    }
    ProviderCollectionResult collect(const UsageCollectionRequest& request) const noexcept override {
        collections.fetch_add(1);
        {
            const std::lock_guard lock(mutex);
            lastRequestedConnection = request.connectionID();
            lastObservedAt = request.observedAt();
        }
        if (started) {
            started->raise();
        }
        if (gate && !gate->wait()) {
            gateTimedOut = true;
        }
        if (finished) {
            finished->raise();
        }
        std::vector<ProviderDiagnostic> diagnostics;
        if (severity) {
            diagnostics.emplace_back(*severity, "fake.finding", "Something happened.");
        }
        std::optional<Date> retryNotBefore;
        if (retryAfterSeconds) {
            retryNotBefore = addingSeconds(request.observedAt(), *retryAfterSeconds);
        }
        return ProviderCollectionResult(descriptor_, request.observedAt(), {}, {}, diagnostics,
                                        retryNotBefore);
    }

    std::optional<DiagnosticSeverity> severity;
    std::optional<double> retryAfterSeconds;
    Signal* started = nullptr;
    Signal* gate = nullptr;
    Signal* finished = nullptr;
    mutable std::atomic<int> collections{0};
    mutable std::atomic<bool> gateTimedOut{false};
    mutable std::mutex mutex;
    mutable std::optional<Uuid> lastRequestedConnection;
    mutable std::optional<Date> lastObservedAt;

private:
    ProviderDescriptor descriptor_;
};

class RefreshCoordinatorTest : public ::testing::Test {
protected:
    std::shared_ptr<FakeProvider> codex = std::make_shared<FakeProvider>(codexID);
    std::shared_ptr<FakeProvider> claude = std::make_shared<FakeProvider>(claudeID);
    ManualClock clock;
    const Uuid codexConnection = *Uuid::parse("A115A6E0-337E-4F26-9809-6B2E75C39D01");
    const Uuid claudeConnection = *Uuid::parse("A115A6E0-337E-4F26-9809-6B2E75C39D02");

    std::unique_ptr<RefreshCoordinator> makeCoordinator() {
        return std::make_unique<RefreshCoordinator>(
            std::vector<ProviderRegistration>{{codexConnection, codex}, {claudeConnection, claude}},
            RefreshBackoffPolicy(30, 1800), [this] { return clock.now(); });
    }

    static std::vector<std::string> outcomeIDs(const RefreshSummary& summary) {
        std::vector<std::string> ids;
        for (const auto& outcome : summary.outcomes()) {
            ids.push_back(outcome.providerID());
        }
        return ids;
    }
};

// Polls the kernel's view of a thread until it sleeps: the only place a refresh call sleeps
// while another refresh is in flight is the wait for that refresh's summary.
bool waitUntilSleeping(pid_t tid) {
    const auto deadline = std::chrono::steady_clock::now() + 10s;
    const std::string path = "/proc/self/task/" + std::to_string(tid) + "/stat";
    while (std::chrono::steady_clock::now() < deadline) {
        std::ifstream stat(path);
        std::string line;
        std::getline(stat, line);
        const auto close = line.rfind(')');
        if (close != std::string::npos && close + 2 < line.size() && line[close + 2] == 'S') {
            return true;
        }
        std::this_thread::yield();
    }
    return false;
}

TEST_F(RefreshCoordinatorTest, ConcurrentRefreshesShareOneSummary) {
    Signal codexStarted;
    Signal release;
    codex->started = &codexStarted;
    codex->gate = &release;
    const auto coordinator = makeCoordinator();
    const Date firstStart = clock.now();

    std::optional<RefreshSummary> scheduled;
    std::optional<RefreshSummary> manual;
    std::thread first([&] { scheduled = coordinator->refresh(RefreshTrigger::scheduled); });
    ASSERT_TRUE(codexStarted.wait());
    clock.advance(5);
    std::atomic<pid_t> secondTid{0};
    std::thread second([&] {
        secondTid = static_cast<pid_t>(syscall(SYS_gettid));
        manual = coordinator->refresh(RefreshTrigger::manual);
    });
    while (secondTid == 0) {
        std::this_thread::yield();
    }
    EXPECT_TRUE(waitUntilSleeping(secondTid));
    release.raise();
    first.join();
    second.join();

    ASSERT_TRUE(scheduled && manual);
    EXPECT_EQ(manual->trigger(), RefreshTrigger::scheduled);
    EXPECT_EQ(manual->startedAt(), firstStart);
    EXPECT_EQ(outcomeIDs(*manual), outcomeIDs(*scheduled));
    EXPECT_EQ(codex->collections, 1);
    EXPECT_EQ(claude->collections, 1);
}

// Each order has one provider wait for the other to finish: run one after the other, in either
// order, one of them would time out. So this also shows the collections run at the same time.
TEST_F(RefreshCoordinatorTest, OutcomesAreSortedByProviderIDWhateverFinishesFirst) {
    for (const bool claudeLast : {true, false}) {
        Signal codexFinished;
        Signal claudeFinished;
        codex->finished = &codexFinished;
        claude->finished = &claudeFinished;
        codex->gate = claudeLast ? nullptr : &claudeFinished;
        claude->gate = claudeLast ? &codexFinished : nullptr;
        const auto summary = makeCoordinator()->refresh(RefreshTrigger::manual);
        EXPECT_EQ(outcomeIDs(summary), (std::vector<std::string>{claudeID, codexID})) << claudeLast;
        EXPECT_FALSE(codex->gateTimedOut || claude->gateTimedOut);
    }
}

TEST_F(RefreshCoordinatorTest, RequestsCarryTheConnectionAndTheRefreshStart) {
    const auto summary = makeCoordinator()->refresh(RefreshTrigger::manual);
    EXPECT_EQ(summary.startedAt(), clock.now());
    EXPECT_EQ(codex->lastRequestedConnection, codexConnection);
    EXPECT_EQ(claude->lastRequestedConnection, claudeConnection);
    EXPECT_EQ(codex->lastObservedAt, summary.startedAt());
    EXPECT_EQ(summary.trigger(), RefreshTrigger::manual);
}

TEST_F(RefreshCoordinatorTest, BackoffHoldsScheduledRefreshesUntilItsDateInclusive) {
    codex->severity = DiagnosticSeverity::error;
    const auto coordinator = makeCoordinator();
    Date thirdStart;
    // A manual refresh collects whatever the backoff says: all three are counted below.
    for (int failure = 1; failure <= 3; ++failure) {
        thirdStart = coordinator->refresh(RefreshTrigger::manual).startedAt();
        clock.advance(1);
    }
    EXPECT_EQ(coordinator->nextAutomaticRefreshDate(codexID), addingSeconds(thirdStart, 120));
    EXPECT_FALSE(coordinator->nextAutomaticRefreshDate(claudeID).has_value());

    clock.set(addingSeconds(thirdStart, 119));
    const auto early = coordinator->refresh(RefreshTrigger::scheduled);
    EXPECT_EQ(early.skippedProviderIDs(), std::vector<std::string>{codexID});
    EXPECT_EQ(outcomeIDs(early), std::vector<std::string>{claudeID});
    EXPECT_EQ(codex->collections, 3);

    clock.set(addingSeconds(thirdStart, 120));
    const auto due = coordinator->refresh(RefreshTrigger::appBecameActive);
    EXPECT_TRUE(due.skippedProviderIDs().empty());
    EXPECT_EQ(codex->collections, 4);
    // The fourth failure doubles the wait again.
    EXPECT_EQ(coordinator->nextAutomaticRefreshDate(codexID), addingSeconds(due.startedAt(), 240));
}

TEST_F(RefreshCoordinatorTest, AServicesRetryAfterOutlastsTheBackoffButNeverShortensIt) {
    codex->severity = DiagnosticSeverity::error;
    const auto coordinator = makeCoordinator();
    codex->retryAfterSeconds = 600;
    const auto limited = coordinator->refresh(RefreshTrigger::manual);
    EXPECT_EQ(coordinator->nextAutomaticRefreshDate(codexID), addingSeconds(limited.startedAt(), 600));
    codex->retryAfterSeconds = 5; // the backoff's 60 s stand
    const auto soon = coordinator->refresh(RefreshTrigger::manual);
    EXPECT_EQ(coordinator->nextAutomaticRefreshDate(codexID), addingSeconds(soon.startedAt(), 60));
}

TEST_F(RefreshCoordinatorTest, SkippedIDsAreSorted) {
    codex->severity = DiagnosticSeverity::error;
    claude->severity = DiagnosticSeverity::error;
    const auto coordinator = makeCoordinator();
    coordinator->refresh(RefreshTrigger::manual);
    const auto summary = coordinator->refresh(RefreshTrigger::providerFileChanged);
    EXPECT_TRUE(summary.outcomes().empty());
    EXPECT_EQ(summary.skippedProviderIDs(), (std::vector<std::string>{claudeID, codexID}));
}

TEST_F(RefreshCoordinatorTest, OneSuccessClearsBackoffAndWarningsAreSuccesses) {
    codex->severity = DiagnosticSeverity::error;
    const auto coordinator = makeCoordinator();
    coordinator->refresh(RefreshTrigger::manual);
    coordinator->refresh(RefreshTrigger::manual);
    ASSERT_TRUE(coordinator->nextAutomaticRefreshDate(codexID).has_value());

    codex->severity = DiagnosticSeverity::warning;
    const auto summary = coordinator->refresh(RefreshTrigger::manual);
    EXPECT_FALSE(summary.outcomes().back().providerFailed());
    EXPECT_FALSE(coordinator->nextAutomaticRefreshDate(codexID).has_value());

    // Counting starts again from one.
    codex->severity = DiagnosticSeverity::error;
    const auto again = coordinator->refresh(RefreshTrigger::manual);
    EXPECT_EQ(coordinator->nextAutomaticRefreshDate(codexID), addingSeconds(again.startedAt(), 30));
}

TEST(RefreshBackoffPolicy, DoublesFromThirtyToEighteenHundred) {
    const RefreshBackoffPolicy policy(30, 1800);
    const std::vector<double> expected{30, 60, 120, 240, 480, 960, 1800, 1800};
    for (std::size_t failures = 1; failures <= expected.size(); ++failures) {
        EXPECT_EQ(policy.delayAfter(static_cast<long long>(failures)), expected[failures - 1]) << failures;
    }
    EXPECT_EQ(RefreshBackoffPolicy(1, 1e12).delayAfter(1'000'000), 1048576);
}

} // namespace
} // namespace gaugewell
