#include "CodexProvider/CodexAppServerTransport.h"
#include "CodexProvider/CodexPayloadNormalizer.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <poll.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace gaugewell {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr std::string_view requests = "{\"id\":1,\"method\":\"initialize\",\"params\":{\"clientInfo\":{"
                                      "\"name\":\"gaugewell\",\"version\":\"0.1.0\"},"
                                      "\"capabilities\":{\"experimentalApi\":true}}}\n"
                                      "{\"method\":\"initialized\",\"params\":{}}\n"
                                      "{\"id\":2,\"method\":\"account/rateLimits/read\",\"params\":null}\n"
                                      "{\"id\":3,\"method\":\"account/usage/read\",\"params\":null}\n";

// A server that answers at once, in shell builtins only, and leaves when its input ends.
constexpr std::string_view instantServer = R"SH(#!/bin/sh
read line
echo '{"id":1,"result":{}}'
read a; read b; read c
echo '{"id":2,"result":{"rateLimits":{"limitId":"codex","primary":{"usedPercent":42,"windowDurationMins":300}}}}'
echo '{"id":3,"result":{"dailyUsageBuckets":[{"startDate":"2026-11-21","tokens":1200}]}}'
read d
)SH";

struct Scratch {
    Scratch() {
        std::string pattern = (fs::temp_directory_path() / "gaugewell-bench.XXXXXX").string();
        if (::mkdtemp(pattern.data()) != nullptr) {
            root = pattern;
        }
        fs::create_directories(root / "home");
        std::ofstream(root / "codex") << instantServer;
        fs::permissions(root / "codex", fs::perms::owner_all);
    }
    ~Scratch() {
        std::error_code ignored;
        fs::remove_all(root, ignored);
    }
    fs::path root;
};

const Scratch& scratch() {
    static const Scratch instance;
    return instance;
}

fs::path realCodex() {
    return fs::path(GAUGEWELL_SOURCE_DIR) / ".deps/codex/node_modules/.bin/codex";
}

std::optional<fs::path> nativeCodex() {
    std::error_code error;
    for (auto entry = fs::recursive_directory_iterator(
             fs::path(GAUGEWELL_SOURCE_DIR) / ".deps/codex/node_modules/@openai", error);
         !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
        if (entry->path().filename() == "codex" && entry->path().parent_path().filename() == "bin" &&
            entry->is_regular_file()) {
            return entry->path();
        }
    }
    return std::nullopt;
}

Environment environmentFor(const fs::path& executable) {
    return {{"HOME", (scratch().root / "home").string()},
            {"PATH", executable.parent_path().string() + ":/usr/bin:/bin"}};
}

// The least a client can do: start the server, write all four lines at once, read until the
// answers to ids 2 and 3 (any order) have arrived, close, reap. No decoding, no deadline.
bool referenceExchange(const fs::path& executable, const Environment& environment) {
    int input[2];
    int output[2];
    if (::pipe2(input, O_CLOEXEC) != 0 || ::pipe2(output, O_CLOEXEC) != 0) {
        return false;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input[0], 0);
    posix_spawn_file_actions_adddup2(&actions, output[1], 1);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    std::vector<std::string> storage;
    for (const auto& [key, value] : environment) {
        storage.push_back(key + "=" + value);
    }
    std::vector<char*> envp;
    for (auto& entry : storage) {
        envp.push_back(entry.data());
    }
    envp.push_back(nullptr);
    std::string program = executable.string();
    std::string appServer = "app-server";
    std::string stdio = "--stdio";
    char* argv[] = {program.data(), appServer.data(), stdio.data(), nullptr};
    pid_t pid = -1;
    const int spawned = ::posix_spawn(&pid, program.c_str(), &actions, nullptr, argv, envp.data());
    posix_spawn_file_actions_destroy(&actions);
    ::close(input[0]);
    ::close(output[1]);
    bool complete = false;
    if (spawned == 0 &&
        ::write(input[1], requests.data(), requests.size()) == static_cast<ssize_t>(requests.size())) {
        std::string received;
        char buffer[8192];
        for (ssize_t count; (count = ::read(output[0], buffer, sizeof buffer)) > 0;) {
            received.append(buffer, static_cast<std::size_t>(count));
            if (received.find("\"id\":2") != std::string::npos &&
                received.find("\"id\":3") != std::string::npos && received.back() == '\n') {
                complete = true;
                break;
            }
        }
    }
    ::close(input[1]);
    ::close(output[0]);
    if (spawned == 0) {
        ::kill(pid, SIGTERM);
        ::waitpid(pid, nullptr, 0);
    }
    return complete;
}

double secondsOf(Clock::duration duration) {
    return std::chrono::duration<double>(duration).count();
}

// Our transport against the reference client, alternating, on the same instant server.
void transportVersusReferenceClient(benchmark::State& state) {
    const fs::path server = scratch().root / "codex";
    const Environment environment = environmentFor(server);
    const CodexAppServerTransport transport(server, environment, std::chrono::seconds(10), 1 << 20);
    double transportSeconds = 0;
    double referenceSeconds = 0;
    for (auto _ : state) {
        const auto start = Clock::now();
        const auto response = transport.fetchUsage();
        const auto middle = Clock::now();
        const bool referenceCompleted = referenceExchange(server, environment);
        const auto end = Clock::now();
        if (!response || !referenceCompleted) {
            state.SkipWithError("an exchange with the instant server failed");
            return;
        }
        transportSeconds += secondsOf(middle - start);
        referenceSeconds += secondsOf(end - middle);
        state.SetIterationTime(secondsOf(middle - start));
    }
    const double iterations = static_cast<double>(state.iterations());
    state.counters["transport_ms"] = transportSeconds / iterations * 1e3;
    state.counters["reference_ms"] = referenceSeconds / iterations * 1e3;
    state.counters["ratio"] = transportSeconds / referenceSeconds;
}
BENCHMARK(transportVersusReferenceClient)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(2);

// The real tool, signed out: a complete exchange that ends with its RPC error.
void realCodexExchange(benchmark::State& state, bool native) {
    const auto executable = native ? nativeCodex() : std::optional<fs::path>(realCodex());
    if (!executable || ::access(executable->c_str(), X_OK) != 0) {
        state.SkipWithError("the real codex is missing; run scripts/setup.sh");
        return;
    }
    const CodexAppServerTransport transport(*executable, environmentFor(*executable),
                                            std::chrono::seconds(10), 1 << 20);
    for (auto _ : state) {
        const auto response = transport.fetchUsage();
        if (response || response.error().kind != CodexProviderError::Kind::rpcError) {
            state.SkipWithError("the real codex did not decline as a signed-out server does");
            return;
        }
    }
}
BENCHMARK_CAPTURE(realCodexExchange, npmWrapper, false)->Unit(benchmark::kMillisecond)->Iterations(10);
BENCHMARK_CAPTURE(realCodexExchange, native, true)->Unit(benchmark::kMillisecond)->Iterations(10);

// About 1 MiB of rate limits: many limit ids with two windows each.
std::string largeRateLimitsLine() {
    std::string line = R"({"id":2,"result":{"rateLimits":{"limitId":"codex"},"rateLimitsByLimitId":{)";
    for (int index = 0; line.size() < (1u << 20) - 256; ++index) {
        const std::string id = "limit_" + std::to_string(index);
        if (index > 0) {
            line += ',';
        }
        line += "\"" + id + "\":{\"limitId\":\"" + id + "\",\"limitName\":\"Limit " + std::to_string(index) +
                "\",\"primary\":{\"usedPercent\":" + std::to_string(index % 101) +
                ",\"windowDurationMins\":300,\"resetsAt\":1795003600},\"secondary\":{\"usedPercent\":" +
                std::to_string((index * 7) % 101) + ",\"windowDurationMins\":10080,\"resetsAt\":1795500000}}";
    }
    return line + "}}}";
}

void normalizeOneMebibyte(benchmark::State& state) {
    const std::string line = largeRateLimitsLine();
    const std::optional<std::string> usage = R"({"id":3,"result":{"dailyUsageBuckets":[]}})";
    const Uuid connection = *Uuid::parse("A115A6E0-337E-4F26-9809-6B2E75C39D01");
    const Date observedAt = dateFromUnixSeconds(1'795'000'000);
    std::size_t windows = 0;
    for (auto _ : state) {
        const auto result =
            CodexPayloadNormalizer::normalize(line, usage, connection, observedAt, "codex-cli 0.169.0");
        if (!result) {
            state.SkipWithError("the payload did not normalize");
            return;
        }
        windows = result->windows().size();
        benchmark::DoNotOptimize(result);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * line.size()));
    state.counters["windows"] = static_cast<double>(windows);
}
BENCHMARK(normalizeOneMebibyte)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace gaugewell

int main(int argc, char** argv) {
    // A server that leaves early must not take the benchmark with it.
    std::signal(SIGPIPE, SIG_IGN);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
