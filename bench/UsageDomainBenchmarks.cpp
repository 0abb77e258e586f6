#include "RecordFixtures.h"
#include "UsageDomain/RecordCoding.h"

#include <benchmark/benchmark.h>

namespace gaugewell {
namespace {

void encodeSample(benchmark::State& state) {
    const auto sample = testing::fullSample();
    for (auto _ : state) {
        benchmark::DoNotOptimize(encodeJson(sample).serialized());
    }
}
BENCHMARK(encodeSample);

void decodeSample(benchmark::State& state) {
    const auto text = encodeJson(testing::fullSample()).serialized();
    for (auto _ : state) {
        benchmark::DoNotOptimize(decodeJson<UsageWindowSample>(text));
    }
}
BENCHMARK(decodeSample);

void decodeAndEncodeSample(benchmark::State& state) {
    const auto text = encodeJson(testing::fullSample()).serialized();
    for (auto _ : state) {
        benchmark::DoNotOptimize(encodeJson(decodeJson<UsageWindowSample>(text).value()).serialized());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(decodeAndEncodeSample);

void parseDecimal(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(Decimal::parse("41.5")->dividedBy100());
    }
}
BENCHMARK(parseDecimal);

} // namespace
} // namespace gaugewell

BENCHMARK_MAIN();
