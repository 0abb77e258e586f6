#include "UsageCoordinator/RefreshCoordinator.h"

#include <benchmark/benchmark.h>

namespace gaugewell {
namespace {

class NoOpProvider : public GaugewellProvider {
public:
    explicit NoOpProvider(std::string id)
        : descriptor_(std::move(id), "No-op", std::nullopt) {}
    const ProviderDescriptor& descriptor() const override { return descriptor_; }
    ProviderProbeResult probe() const noexcept override {
        return ProviderProbeResult(descriptor_, ProviderAvailability::available, {}, std::nullopt, {});
    }
    ProviderCollectionResult collect(const UsageCollectionRequest& request) const noexcept override {
        return ProviderCollectionResult(descriptor_, request.observedAt(), {}, {}, {});
    }

private:
    ProviderDescriptor descriptor_;
};

// Coordinator overhead: choosing, one thread per provider, sorting, backoff bookkeeping.
void refreshNoOpProviders(benchmark::State& state) {
    std::vector<ProviderRegistration> registrations;
    for (int i = 0; i < state.range(0); ++i) {
        registrations.emplace_back(Uuid::random(),
                                   std::make_shared<NoOpProvider>("bench.provider." + std::to_string(i)));
    }
    RefreshCoordinator coordinator(std::move(registrations), {30, 1800},
                                   [] { return std::chrono::system_clock::now(); });
    for (auto _ : state) {
        benchmark::DoNotOptimize(coordinator.refresh(RefreshTrigger::manual));
    }
}
BENCHMARK(refreshNoOpProviders)->Arg(1)->Arg(8)->UseRealTime();

} // namespace
} // namespace gaugewell

BENCHMARK_MAIN();
