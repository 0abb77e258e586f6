// Bursts of concurrent requests against the widget feed with a snapshot source that answers at once:
// how many are served, how many fail, and the latency from connect to the server's close.

#include "GaugewellUI/Model/UsageAppModel.h"
#include "GaugewellUI/WidgetFeed/WidgetFeedSource.h"
#include "GaugewellUI/WidgetFeed/WidgetLiveServer.h"
#include "Platform/InMemoryUserDefaults.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QHostAddress>
#include <QTcpServer>
#include <QTimer>
#include <algorithm>
#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <netinet/in.h>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using namespace gaugewell;
using Clock = std::chrono::steady_clock;

const std::string request = "GET /widget/v1 HTTP/1.1\r\nHost: 127.0.0.1\r\nCache-Control: no-store\r\n\r\n";

WidgetUsageSnapshot snapshot() {
    return WidgetUsageSnapshot(
        widgetDateFromSecondsSinceReferenceDate(785001234.5),
        {WidgetProviderUsage(
             WidgetProviderService::codex, WidgetProviderState::available,
             {WidgetWindow("primary", "Five-hour", 0.42, widgetDateFromSecondsSinceReferenceDate(785010000)),
              WidgetWindow("secondary", "Weekly", 0.17, std::nullopt)}),
         WidgetProviderUsage(WidgetProviderService::claude, WidgetProviderState::available,
                             {WidgetWindow("five_hour", "Five-hour", 0.08, std::nullopt)})});
}

struct Burst {
    int served = 0;
    int errors = 0;
    std::vector<double> latenciesMs;
};

// All connections are opened at once, each sends its request as soon as it is connected, and a
// request counts as served when a complete 200 response arrives before the close.
Burst runBurst(std::uint16_t port, int concurrency, std::chrono::seconds deadline) {
    struct Client {
        int fd;
        Clock::time_point started;
        bool sent = false;
        std::string received;
    };
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const std::string expected = widgetFeedResponse(WidgetFeedStatus::ok, snapshot().json());

    Burst burst;
    std::vector<Client> clients;
    std::vector<pollfd> polls;
    for (int index = 0; index < concurrency; ++index) {
        const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        clients.push_back({fd, Clock::now(), false, {}});
        if (fd < 0 || (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 &&
                       errno != EINPROGRESS)) {
            ++burst.errors;
            if (fd >= 0) {
                ::close(fd);
            }
            clients.back().fd = -1;
        }
        polls.push_back({clients.back().fd, POLLOUT, 0});
    }
    const auto end = Clock::now() + deadline;
    int open = concurrency - burst.errors;
    char buffer[8192];
    while (open > 0 && Clock::now() < end) {
        if (::poll(polls.data(), polls.size(), 100) <= 0) {
            continue;
        }
        for (std::size_t index = 0; index < clients.size(); ++index) {
            auto& client = clients[index];
            auto& entry = polls[index];
            if (client.fd < 0 || entry.revents == 0) {
                continue;
            }
            bool finished = false;
            if (!client.sent) {
                client.sent = ::send(client.fd, request.data(), request.size(), MSG_NOSIGNAL) ==
                              static_cast<ssize_t>(request.size());
                finished = !client.sent;
                entry.events = POLLIN;
            } else {
                const ssize_t count = ::recv(client.fd, buffer, sizeof buffer, 0);
                if (count > 0) {
                    client.received.append(buffer, static_cast<std::size_t>(count));
                } else if (count == 0 || errno != EAGAIN) {
                    finished = true;
                }
            }
            if (finished) {
                // Through the model the snapshot is built afresh; any complete 200 answer counts.
                if (client.received == expected ||
                    (client.received.rfind("HTTP/1.1 200 OK\r\n", 0) == 0 && client.received.back() == '}')) {
                    ++burst.served;
                    burst.latenciesMs.push_back(
                        std::chrono::duration<double, std::milli>(Clock::now() - client.started).count());
                } else {
                    ++burst.errors;
                }
                ::close(client.fd);
                client.fd = entry.fd = -1;
                --open;
            }
        }
    }
    for (const auto& client : clients) {
        if (client.fd >= 0) {
            ::close(client.fd);
            ++burst.errors; // no answer before the deadline
        }
    }
    return burst;
}

double percentile(std::vector<double> values, double fraction) {
    if (values.empty()) {
        return 0;
    }
    std::sort(values.begin(), values.end());
    const auto index = static_cast<std::size_t>(fraction * static_cast<double>(values.size() - 1) + 0.5);
    return values[std::min(index, values.size() - 1)];
}

// Both services signed in, answering at once, counting how often they are collected.
class SignedIn : public ProviderAuthenticating {
public:
    ProviderConnectionState status(ProviderService service) override {
        return {service, ProviderConnectionStatus::signedIn, std::nullopt};
    }
    ProviderConnectionState login(ProviderService service) override { return status(service); }
    ProviderConnectionState disconnect(ProviderService service) override { return status(service); }
    void cancelLogin() override {}
};

class InstantCollector : public GaugewellProvider {
public:
    explicit InstantCollector(std::string_view id)
        : descriptor_(std::string(id), "Instant", std::nullopt) {}
    const ProviderDescriptor& descriptor() const override { return descriptor_; }
    ProviderProbeResult probe() const noexcept override {
        return ProviderProbeResult(descriptor_, ProviderAvailability::available, {}, std::nullopt, {});
    }
    ProviderCollectionResult collect(const UsageCollectionRequest& request) const noexcept override {
        ++collections;
        return ProviderCollectionResult(descriptor_, request.observedAt(), {}, {}, {});
    }
    mutable std::atomic<int> collections{0};

private:
    ProviderDescriptor descriptor_;
};

void ConcurrentRequests(benchmark::State& state) {
    const int concurrency = static_cast<int>(state.range(0));
    const auto cap = static_cast<std::size_t>(state.range(1));
    const bool throughModel = state.range(2) != 0;
    const auto codex = std::make_shared<InstantCollector>(codexProviderID);
    const auto claude = std::make_shared<InstantCollector>(claudeProviderID);
    UsageAppModel model(UsageAppModel::Dependencies{std::make_shared<SignedIn>(), codex, claude,
                                                    std::make_shared<InMemoryUserDefaults>()});
    std::uint16_t port = 0;
    {
        QTcpServer probe;
        probe.listen(QHostAddress::LocalHost, 0);
        port = probe.serverPort();
    }
    WidgetLiveServerOptions options; // the shipped idle timeout, on a free port
    options.port = port;
    options.maximumConnections = cap;
    const auto feed = widgetFeedSource(model);
    WidgetLiveServer server(
        [&](WidgetLiveServer::SnapshotReply reply) {
            if (throughModel) {
                feed(std::move(reply)); // the shipped rule: at most one refresh a minute
            } else {
                reply(snapshot());
            }
        },
        options);
    server.start();
    if (!server.isListening()) {
        state.SkipWithError("the feed could not listen");
        return;
    }

    Burst total;
    for (auto _ : state) {
        const auto started = Clock::now();
        Burst burst;
        bool done = false;
        QEventLoop loop;
        std::thread client([&] {
            burst = runBurst(port, concurrency, std::chrono::seconds(30));
            QMetaObject::invokeMethod(
                &loop,
                [&] {
                    done = true;
                    loop.quit();
                },
                Qt::QueuedConnection);
        });
        QTimer::singleShot(std::chrono::seconds(40), &loop, &QEventLoop::quit);
        loop.exec();
        client.join();
        QCoreApplication::processEvents();
        if (!done) {
            state.SkipWithError("a burst did not finish");
            return;
        }
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - started).count());
        total.served += burst.served;
        total.errors += burst.errors;
        total.latenciesMs.insert(total.latenciesMs.end(), burst.latenciesMs.begin(), burst.latenciesMs.end());
        // Bursts do not overlap: the next starts when the server has let go of every connection.
        const auto settleBy = Clock::now() + std::chrono::seconds(10);
        QTimer tick;
        tick.start(5);
        while (server.openConnectionCount() > 0 && Clock::now() < settleBy) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }
    const double bursts = static_cast<double>(state.iterations());
    state.counters["served"] = static_cast<double>(total.served) / bursts;
    state.counters["errors"] = static_cast<double>(total.errors) / bursts;
    state.counters["p50_ms"] = percentile(total.latenciesMs, 0.50);
    state.counters["p99_ms"] = percentile(total.latenciesMs, 0.99);
    state.counters["collections_per_provider_per_burst"] =
        static_cast<double>(codex->collections + claude->collections) / 2 / bursts;
    state.SetItemsProcessed(total.served);
}

// Arguments: concurrent requests, connection cap (64 is the shipped one), and whether the snapshot
// comes through the app model (a refresh of two instant providers at most once a minute, as shipped)
// or straight from a fixed value.
BENCHMARK(ConcurrentRequests)
    ->ArgNames({"requests", "cap", "model"})
    ->Args({64, 64, 0})
    ->Args({500, 64, 0})
    ->Args({500, 64, 1})
    ->Args({1000, 64, 0})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(20);

} // namespace

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN);
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
