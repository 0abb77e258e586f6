#include "ProviderKit/Process/ChildProcess.h"
#include "ProviderKit/Process/PosixCommandRunner.h"

#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace gaugewell {
namespace {

const Environment environment{{"PATH", "/usr/bin:/bin"}};

// The floor: one posix_spawn and one waitpid, nothing else.
void bareSpawnOfTrue(benchmark::State& state) {
    char program[] = "/bin/true";
    char* argv[] = {program, nullptr};
    char* envp[] = {nullptr};
    for (auto _ : state) {
        pid_t pid = -1;
        if (::posix_spawn(&pid, program, nullptr, nullptr, argv, envp) != 0) {
            state.SkipWithError("posix_spawn failed");
            break;
        }
        int status = 0;
        ::waitpid(pid, &status, 0);
        benchmark::DoNotOptimize(status);
    }
}
BENCHMARK(bareSpawnOfTrue)->UseRealTime()->Unit(benchmark::kMillisecond);

// Pipes, close-on-exec bookkeeping and signal defaults, with a blocking wait.
void childProcessOfTrue(benchmark::State& state) {
    for (auto _ : state) {
        auto child = ChildProcess::spawn("/bin/true", {}, environment, {});
        if (!child) {
            state.SkipWithError("spawn failed");
            break;
        }
        auto process = std::move(child).value();
        benchmark::DoNotOptimize(process.waitUntilExit());
    }
}
BENCHMARK(childProcessOfTrue)->UseRealTime()->Unit(benchmark::kMillisecond);

// The runner as the providers use it; its 10 ms exit poll dominates.
void runnerOfTrue(benchmark::State& state) {
    const PosixCommandRunner runner;
    for (auto _ : state) {
        auto result = runner.run("/bin/true", {}, environment, std::chrono::seconds(5), 16384);
        if (!result) {
            state.SkipWithError("run failed");
            break;
        }
        benchmark::DoNotOptimize(result);
    }
}
BENCHMARK(runnerOfTrue)->UseRealTime()->Unit(benchmark::kMillisecond);

} // namespace
} // namespace gaugewell

BENCHMARK_MAIN();
