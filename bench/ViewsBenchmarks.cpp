// How long the windows take to open with real-looking data (two providers, four windows each and
// 90 days of token history): the popup and the dashboard, the first time (made and laid out) and
// again (shown). Offscreen, so the figures leave out the compositor.

#include "GaugewellUI/Model/UsageAppModel.h"
#include "GaugewellUI/Views/Dashboard/DashboardView.h"
#include "GaugewellUI/Views/Tray/MenuBarController.h"
#include "GaugewellUI/Views/Tray/PopupWindow.h"
#include "Platform/InMemoryUserDefaults.h"
#include "RecordFixtures.h"

#include <QApplication>
#include <QTest>
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <memory>

static void registerViewResources() {
    Q_INIT_RESOURCE(resources);
}

namespace {

using namespace gaugewell;
using Clock = std::chrono::system_clock;

class SignedIn : public ProviderAuthenticating {
public:
    ProviderConnectionState status(ProviderService service) override {
        return {service, ProviderConnectionStatus::signedIn, "account"};
    }
    ProviderConnectionState login(ProviderService service) override { return status(service); }
    ProviderConnectionState disconnect(ProviderService service) override { return status(service); }
    void cancelLogin() override {}
};

class Busy : public GaugewellProvider {
public:
    explicit Busy(ProviderService service)
        : service(service)
        , descriptor_(std::string(providerID(service)), std::string(displayName(service)), std::nullopt) {}
    const ProviderDescriptor& descriptor() const override { return descriptor_; }
    ProviderProbeResult probe() const noexcept override {
        return ProviderProbeResult(descriptor_, ProviderAvailability::available, {}, std::nullopt, {});
    }
    ProviderCollectionResult collect(const UsageCollectionRequest& request) const noexcept override {
        const auto now = request.observedAt();
        std::vector<UsageWindowSample> windows;
        const std::pair<UsageWindowKind, const char*> kinds[] = {{UsageWindowKind::fiveHour, "0.42"},
                                                                 {UsageWindowKind::sevenDay, "0.18"},
                                                                 {UsageWindowKind::modelSpecific, "0.915"},
                                                                 {UsageWindowKind::custom, "0"}};
        int index = 0;
        for (const auto& [kind, used] : kinds) {
            windows.emplace_back(
                "w" + std::to_string(index), request.connectionID(), "bucket" + std::to_string(index),
                std::optional<std::string>("Bucket " + std::to_string(index)), kind, std::nullopt, now,
                std::nullopt, 18000, std::nullopt, std::nullopt, now + std::chrono::hours(2 + index),
                Decimal::parse(used), std::nullopt, std::nullopt, std::nullopt, std::nullopt,
                MeasurementAuthority::vendorAuthoritative, MeasurementConfidence::exact,
                MeasurementCoverage::account, MeasurementFreshness::live, testing::testSource(),
                std::nullopt);
            ++index;
        }
        std::vector<TokenUsageBucket> buckets;
        for (int day = 0; day < 90; ++day) {
            const Date start = now - std::chrono::hours(24 * (day + 1));
            buckets.emplace_back("d" + std::to_string(day), request.connectionID(), start,
                                 start + std::chrono::hours(24), "gregorian", "UTC", std::nullopt,
                                 std::nullopt, std::nullopt, std::nullopt, std::nullopt,
                                 std::int64_t(900'000 + day * 13'771 + int(service) * 250'000),
                                 MeasurementAuthority::vendorAuthoritative, MeasurementConfidence::exact,
                                 MeasurementCoverage::account, testing::testSource(), std::nullopt);
        }
        return ProviderCollectionResult(descriptor_, now, windows, buckets, {});
    }

private:
    ProviderService service;
    ProviderDescriptor descriptor_;
};

class FixedResetTime : public ResetTimeFormatter {
public:
    std::string format(Date) const override { return "3:45 PM"; }
};

struct Fixture {
    std::shared_ptr<InMemoryUserDefaults> defaults = std::make_shared<InMemoryUserDefaults>();
    UsageAppModel model{UsageAppModel::Dependencies{
        std::make_shared<SignedIn>(),
        {std::make_shared<Busy>(ProviderService::codex), std::make_shared<Busy>(ProviderService::claude)},
        defaults}};

    Fixture() {
        bool done = false;
        model.refresh(RefreshTrigger::manual).then(&model, [&done] { done = true; });
        if (!QTest::qWaitFor([&] { return done; }, 10000)) {
            std::abort();
        }
    }
};

Fixture& fixture() {
    static Fixture* shared = new Fixture;
    return *shared;
}

void settle(QWidget& window) {
    window.show();
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents();
}

void BM_PopupFirstOpen(benchmark::State& state) {
    for (auto _ : state) {
        MenuBarController controller(
            fixture().model, fixture().defaults,
            {std::make_shared<FixedResetTime>(), [] { return Clock::now(); }, [] {}, {}});
        const auto started = std::chrono::steady_clock::now();
        controller.togglePopover();
        settle(controller.popover());
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count());
        controller.popover().hide();
    }
}
BENCHMARK(BM_PopupFirstOpen)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20);

void BM_PopupOpenAgain(benchmark::State& state) {
    MenuBarController controller(
        fixture().model, fixture().defaults,
        {std::make_shared<FixedResetTime>(), [] { return Clock::now(); }, [] {}, {}});
    controller.togglePopover();
    settle(controller.popover());
    for (auto _ : state) {
        controller.togglePopover(); // hides
        const auto started = std::chrono::steady_clock::now();
        controller.togglePopover();
        settle(controller.popover());
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count());
    }
}
BENCHMARK(BM_PopupOpenAgain)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(50);

void BM_DashboardFirstOpen(benchmark::State& state) {
    for (auto _ : state) {
        const auto started = std::chrono::steady_clock::now();
        DashboardWindow dashboard(fixture().model, [] {});
        settle(dashboard);
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count());
    }
}
BENCHMARK(BM_DashboardFirstOpen)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(10);

void BM_DashboardOpenAgain(benchmark::State& state) {
    DashboardWindow dashboard(fixture().model, [] {});
    settle(dashboard);
    for (auto _ : state) {
        dashboard.hide();
        const auto started = std::chrono::steady_clock::now();
        settle(dashboard);
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count());
    }
}
BENCHMARK(BM_DashboardOpenAgain)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20);

} // namespace

int main(int argc, char** argv) {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QApplication application(argc, argv);
    registerViewResources();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
