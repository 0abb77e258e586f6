#include "CodexProvider/CodexAppServerTransport.h"
#include "FakeCodex.h"

#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <ostream>

namespace gaugewell {
namespace {

using namespace std::chrono_literals;

using testing::FakeCodex;
using Kind = CodexProviderError::Kind;
using Outcome = Expected<CodexAppServerResponse, CodexProviderError>;

constexpr std::string_view expectedRequests =
    "{\"id\":1,\"method\":\"initialize\",\"params\":{\"clientInfo\":{\"name\":\"gaugewell\",\"version\":\"0."
    "1.0\"},"
    "\"capabilities\":{\"experimentalApi\":true}}}\n"
    "{\"method\":\"initialized\",\"params\":{}}\n"
    "{\"id\":2,\"method\":\"account/rateLimits/read\",\"params\":null}\n"
    "{\"id\":3,\"method\":\"account/usage/read\",\"params\":null}\n";

const std::string rateLimitsLine =
    R"({"id":2,"result":{"rateLimits":{"limitId":"codex","primary":{"usedPercent":42}}}})";
const std::string accountUsageLine = R"({"id":3,"result":{"dailyUsageBuckets":[]}})";
const std::string notificationLine = R"({"method":"remoteControl/status/changed","params":{}})";
const std::string initializeAnswer = R"({"id":1,"result":{}})";

// Our lines hold no quote, backslash or carriage return: each is a python literal as it is.
std::string sendLines(const std::vector<std::string>& lines) {
    std::string body;
    for (const auto& line : lines) {
        body += "send('" + line + "')\n";
    }
    return body;
}

// After the handshake: these lines, then `ending`.
std::string answering(const std::vector<std::string>& lines, const std::string& ending = "finish()") {
    return "handshake()\n" + sendLines(lines) + ending;
}

// A fake whose every output byte is known: initialize answer, a notification and both responses.
const std::string exactOutputScript =
    "receive()\n" + sendLines({initializeAnswer}) + "for _ in range(3):\n    receive()\n" +
    sendLines({notificationLine, rateLimitsLine, accountUsageLine}) + "finish()";
const std::int64_t exactOutputBytes = static_cast<std::int64_t>(
    initializeAnswer.size() + notificationLine.size() + rateLimitsLine.size() + accountUsageLine.size() + 4);

Outcome both() {
    return CodexAppServerResponse{rateLimitsLine, accountUsageLine};
}
Outcome rateLimitsOnly() {
    return CodexAppServerResponse{rateLimitsLine, std::nullopt};
}
Outcome failed(CodexProviderError error) {
    return unexpected(error);
}

struct ExchangeCase {
    std::string name;
    std::string script; // python, or /bin/sh with `shell`
    Outcome outcome;
    std::chrono::milliseconds timeout = std::chrono::seconds(10);
    std::int64_t limit = 1 << 20;
    bool shell = false;
};

ExchangeCase malformed(std::string name, const std::string& line) {
    return {std::move(name), answering({line, rateLimitsLine, accountUsageLine}),
            failed(Kind::malformedLine)};
}

void PrintTo(const ExchangeCase& exchange, std::ostream* out) {
    *out << exchange.name;
}

class CodexAppServerTransportTest : public ::testing::TestWithParam<ExchangeCase> {
protected:
    void SetUp() override { std::signal(SIGPIPE, SIG_IGN); }

    void TearDown() override {
        // Whatever the outcome, the exchange leaves no child behind, running or unreaped.
        EXPECT_TRUE(testing::childrenOfThisProcess().empty());
        for (const auto& fake : fakes) {
            if (const auto pid = fake.pid()) {
                EXPECT_TRUE(testing::processIsGone(*pid)) << "fake codex " << *pid << " is still there";
            }
        }
    }

    std::vector<FakeCodex> fakes;
};

TEST_P(CodexAppServerTransportTest, EndsWithTheExpectedOutcomeAndNoChild) {
    const auto& param = GetParam();
    fakes.push_back(param.shell ? FakeCodex::shell(param.script) : FakeCodex::python(param.script));
    const auto started = std::chrono::steady_clock::now();
    const auto response = CodexAppServerTransport(fakes.back().executable(), {{"PATH", "/usr/bin:/bin"}},
                                                  param.timeout, param.limit)
                              .fetchUsage();
    const auto elapsed = std::chrono::steady_clock::now() - started;

    if (!param.outcome) {
        ASSERT_FALSE(response.hasValue());
        EXPECT_EQ(response.error(), param.outcome.error());
        if (param.outcome.error().kind == Kind::timedOut && param.timeout.count() > 0) {
            EXPECT_GE(elapsed, param.timeout);
        }
        return;
    }
    ASSERT_TRUE(response.hasValue()) << static_cast<int>(response.error().kind);
    EXPECT_EQ(response->rateLimits, param.outcome->rateLimits);
    EXPECT_EQ(response->accountUsage, param.outcome->accountUsage);
    if (!param.shell) {
        EXPECT_EQ(fakes.back().receivedInput(), expectedRequests); // never a request more
    }
}

const std::string stderrFlood = R"(import threading
def flood():
    while True:
        sys.stderr.write("x" * 65536)
threading.Thread(target=flood, daemon=True).start()
)";

// $1 $2 must be "app-server --stdio"; standard error must be the null device.
const std::string checksItsStart = R"SH([ "$*" = "app-server --stdio" ] || exit 9
[ "$(readlink /proc/$$/fd/2)" = /dev/null ] || exit 8
read line
echo '{"id":1,"result":{}}'
read a; read b; read c
echo ')SH" + rateLimitsLine + "'\necho '" +
                                   accountUsageLine + "'\nexec cat >/dev/null";

INSTANTIATE_TEST_SUITE_P(
    Exchanges, CodexAppServerTransportTest,
    ::testing::Values(
        ExchangeCase{"RateLimitsFirst", answering({rateLimitsLine, accountUsageLine}), both()},
        ExchangeCase{"UsageFirst", answering({accountUsageLine, rateLimitsLine}), both()},
        ExchangeCase{"NotificationsAndUnknownIdsIgnored",
                     answering({notificationLine, R"({"id":7,"result":{}})", rateLimitsLine,
                                R"({"method":"x","error":{"code":1}})", accountUsageLine, notificationLine}),
                     both()},
        ExchangeCase{"StartedAsAppServerWithStandardErrorDiscarded", checksItsStart, both(), 10s, 1 << 20,
                     true},
        ExchangeCase{"StandardErrorFloodIsDiscarded",
                     stderrFlood + answering({rateLimitsLine, accountUsageLine}), both(), 10s, 4096},
        ExchangeCase{"OutputExactlyAtTheLimit", exactOutputScript, both(), 10s, exactOutputBytes},
        ExchangeCase{"OutputOneByteUnderTheLimit", exactOutputScript, both(), 10s, exactOutputBytes + 1},
        ExchangeCase{"LongestTimeout", answering({rateLimitsLine, accountUsageLine}), both(),
                     std::chrono::milliseconds::max()},
        ExchangeCase{"UsageErrorLeavesUsageAbsent",
                     answering({R"({"id":3,"error":{"code":-32601,"message":"no"}})", rateLimitsLine}),
                     rateLimitsOnly()},
        ExchangeCase{"ExitAfterRateLimitsKeepsThem", answering({rateLimitsLine}, "sys.exit(0)"),
                     rateLimitsOnly()},
        ExchangeCase{"DeadlineAfterRateLimitsKeepsThem", answering({rateLimitsLine}), rateLimitsOnly(),
                     500ms},
        ExchangeCase{"ErrorOnInitialize",
                     R"(receive()
send('{"id":1,"error":{"code":-32600,"message":"Invalid request"}}')
finish())",
                     failed(CodexProviderError::rpcError(-32600))},
        ExchangeCase{"ErrorOnRateLimitsAfterUsage",
                     answering({accountUsageLine, R"({"error":{"code":-32600,"message":"x"},"id":2})"}),
                     failed(CodexProviderError::rpcError(-32600))},
        ExchangeCase{"ExitBeforeRateLimits", answering({accountUsageLine}, "sys.exit(0)"),
                     failed(Kind::streamEnded)},
        ExchangeCase{"OutputOneByteOverTheLimit", exactOutputScript, failed(Kind::outputLimitExceeded), 10s,
                     exactOutputBytes - 1},
        ExchangeCase{"FloodWithoutLineFeed", "exec cat /dev/zero", failed(Kind::outputLimitExceeded), 10s,
                     256 * 1024, true},
        ExchangeCase{"SilentUntilTheDeadline", "exec sleep 60", failed(Kind::timedOut), 300ms, 1 << 20, true},
        ExchangeCase{"IgnoresSigterm", "trap '' TERM\nexec sleep 60", failed(Kind::timedOut), 200ms, 1 << 20,
                     true},
        ExchangeCase{"ZeroTimeout", answering({rateLimitsLine, accountUsageLine}), failed(Kind::timedOut),
                     0ms},
        ExchangeCase{"NegativeTimeout", answering({rateLimitsLine, accountUsageLine}), failed(Kind::timedOut),
                     -1s},
        ExchangeCase{"ClosedItsInput", "exec 0<&-\necho '{\"id\":1,\"result\":{}}'\nexec sleep 60",
                     failed(Kind::writeFailed), 10s, 1 << 20, true},
        // One per way the line's envelope fails to decode.
        malformed("NotJson", "not json"), malformed("NotAnObject", "[2]"),
        malformed("StringId", R"({"id":"2","result":{}})"),
        malformed("ErrorWithoutCode", R"({"id":2,"error":{"message":"x"}})")),
    [](const auto& info) { return info.param.name; });

// Which files cannot be started is in PosixCommandRunnerTests; this is the path to the transport's error.
TEST(CodexAppServerTransport, ExecutableThatCannotStartIsALaunchFailure) {
    testing::ScratchDirectory directory;
    const auto response =
        CodexAppServerTransport(directory.path() / "missing", {}, std::chrono::seconds(5), 1024).fetchUsage();
    ASSERT_FALSE(response.hasValue());
    EXPECT_EQ(response.error().kind, Kind::launchFailed);
}

} // namespace
} // namespace gaugewell
