#include "ClaudeProvider/ClaudeUsageNormalizer.h"
#include "ClaudeProvider/InternetDateTime.h"

#include <benchmark/benchmark.h>

namespace gaugewell {
namespace {

// A typical answer of the usage endpoint: four windows with reset times, one null, one unknown key.
const std::string typicalBody =
    R"({"five_hour":{"utilization":41.5,"resets_at":"2026-11-22T18:00:00.123456+00:00"},)"
    R"("seven_day":{"utilization":12,"resets_at":"2026-11-27T09:00:00Z"},)"
    R"("seven_day_oauth_apps":null,)"
    R"("seven_day_opus":{"utilization":0,"resets_at":null},)"
    R"("seven_day_sonnet":{"utilization":3.25,"resets_at":"2026-11-27T09:00:00+01:00"},)"
    R"("extra_usage":{"is_enabled":false,"monthly_limit":null,"used_credits":null}})";

void normalizeTypicalUsageBody(benchmark::State& state) {
    const Uuid connection = *Uuid::parse("A115A6E0-337E-4F26-9809-6B2E75C39D02");
    const Date observed = dateFromUnixSeconds(1'795'360'000);
    const ClaudeUsageNormalizer normalizer;
    for (auto _ : state) {
        benchmark::DoNotOptimize(normalizer.normalize(typicalBody, connection, observed));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * typicalBody.size()));
}
BENCHMARK(normalizeTypicalUsageBody);

void parseResetTime(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(parseInternetDateTime("2026-11-22T18:00:00.123456+00:00"));
    }
}
BENCHMARK(parseResetTime);

} // namespace
} // namespace gaugewell

BENCHMARK_MAIN();
