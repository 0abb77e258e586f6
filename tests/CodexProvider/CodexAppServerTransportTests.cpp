#include "CodexProvider/CodexAppServerTransport.h"
#include "FakeCodex.h"

#include <chrono>
#include <cmath>
#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <limits>

namespace gaugewell {
namespace {

using testing::FakeCodex;
using Kind = CodexProviderError::Kind;

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

// A python literal for `text`.
std::string pythonLiteral(std::string_view text) {
    std::string literal = "'";
    for (const char c : text) {
        if (c == '\\' || c == '\'') {
            literal += '\\';
        }
        if (c == '\r') {
            literal += "\\r";
            continue;
        }
        literal += c;
    }
    return literal + "'";
}

std::string sendLines(const std::vector<std::string>& lines) {
    std::string body;
    for (const auto& line : lines) {
        body += "send(" + pythonLiteral(line) + ")\n";
    }
    return body;
}

class CodexAppServerTransportTest : public ::testing::Test {
protected:
    void SetUp() override { std::signal(SIGPIPE, SIG_IGN); }

    void TearDown() override {
        // Whatever the outcome, the exchange leaves no child behind, running or unreaped.
        EXPECT_TRUE(testing::childrenOfThisProcess().empty());
        for (const auto& fake : fakes) {
            if (const auto pid = fake->pid()) {
                EXPECT_TRUE(testing::processIsGone(*pid)) << "fake codex " << *pid << " is still there";
            }
        }
    }

    const FakeCodex& python(std::string_view body) {
        fakes.push_back(std::make_unique<FakeCodex>(FakeCodex::python(body)));
        return *fakes.back();
    }
    const FakeCodex& shell(std::string_view body) {
        fakes.push_back(std::make_unique<FakeCodex>(FakeCodex::shell(body)));
        return *fakes.back();
    }

    static Expected<CodexAppServerResponse, CodexProviderError>
    fetch(const FakeCodex& fake, double timeout = 10, std::int64_t limit = 1 << 20) {
        return CodexAppServerTransport(fake.executable(), {{"PATH", "/usr/bin:/bin"}}, timeout, limit)
            .fetchUsage();
    }

    std::vector<std::unique_ptr<FakeCodex>> fakes;
};

TEST_F(CodexAppServerTransportTest, WritesExactlyTheFourRequestLines) {
    const auto& fake = python("handshake()\n" + sendLines({rateLimitsLine, accountUsageLine}) + "finish()");
    const auto response = fetch(fake);
    ASSERT_TRUE(response.hasValue());
    EXPECT_EQ(fake.receivedInput(), expectedRequests);
    EXPECT_EQ(response->rateLimits, rateLimitsLine);
    EXPECT_EQ(response->accountUsage, accountUsageLine);
}

TEST_F(CodexAppServerTransportTest, StartsTheAppServerWithStandardErrorDiscarded) {
    // $1 $2 must be "app-server --stdio"; standard error must be the null device.
    const auto& fake = shell(R"SH([ "$*" = "app-server --stdio" ] || exit 9
[ "$(readlink /proc/$$/fd/2)" = /dev/null ] || exit 8
read line
echo '{"id":1,"result":{}}'
read a; read b; read c
echo ')SH" + rateLimitsLine + "'\necho '" +
                             accountUsageLine + "'\nexec cat >/dev/null");
    const auto response = fetch(fake);
    ASSERT_TRUE(response.hasValue()) << static_cast<int>(response.error().kind);
}

struct OrderCase {
    std::string name;
    std::vector<std::string> lines; // after the handshake
};

class ResponseOrderTest : public CodexAppServerTransportTest,
                          public ::testing::WithParamInterface<OrderCase> {};

TEST_P(ResponseOrderTest, CollectsBothResponses) {
    const auto& fake = python("handshake()\n" + sendLines(GetParam().lines) + "finish()");
    const auto response = fetch(fake);
    ASSERT_TRUE(response.hasValue()) << static_cast<int>(response.error().kind);
    EXPECT_EQ(response->rateLimits, rateLimitsLine);
    EXPECT_EQ(response->accountUsage, accountUsageLine);
}

INSTANTIATE_TEST_SUITE_P(
    Orders, ResponseOrderTest,
    ::testing::Values(OrderCase{"RateLimitsFirst", {rateLimitsLine, accountUsageLine}},
                      OrderCase{"UsageFirst", {accountUsageLine, rateLimitsLine}},
                      OrderCase{"NotificationsAround",
                                {notificationLine, rateLimitsLine, notificationLine,
                                 R"({"method":"x","error":{"code":1}})", accountUsageLine, notificationLine}},
                      OrderCase{"EmptyLinesBetween", {"", rateLimitsLine, "", accountUsageLine}},
                      OrderCase{"UnknownIdsIgnored",
                                {R"({"id":7,"result":{}})", rateLimitsLine, accountUsageLine}},
                      OrderCase{"SecondInitializeAnswerIgnored",
                                {R"({"id":1,"result":{}})", rateLimitsLine, accountUsageLine}}),
    [](const auto& info) { return info.param.name; });

TEST_F(CodexAppServerTransportTest, SecondInitializeAnswerSendsNoMoreRequests) {
    const auto& fake = python(R"(receive()
send('{"id":1,"result":{}}')
send('{"id":1,"result":{}}')
for _ in range(3):
    receive()
)" + sendLines({rateLimitsLine, accountUsageLine}) +
                              "finish()");
    ASSERT_TRUE(fetch(fake).hasValue());
    EXPECT_EQ(fake.receivedInput(), expectedRequests);
}

TEST_F(CodexAppServerTransportTest, LinesSplitAcrossReadsAndJoinedInOneRead) {
    const std::string half = rateLimitsLine.substr(0, 20);
    const std::string rest = rateLimitsLine.substr(20);
    const auto& fake =
        python("import time\nhandshake()\nsend_raw(" + pythonLiteral(half) +
               ".encode())\ntime.sleep(0.05)\nsend_raw((" + pythonLiteral(rest) + " + '\\n' + " +
               pythonLiteral(accountUsageLine) + " + '\\n').encode())\nfinish()");
    const auto response = fetch(fake);
    ASSERT_TRUE(response.hasValue());
    EXPECT_EQ(response->rateLimits, rateLimitsLine);
    EXPECT_EQ(response->accountUsage, accountUsageLine);
}

TEST_F(CodexAppServerTransportTest, CarriageReturnStaysInTheLine) {
    const auto& fake =
        python("handshake()\n" + sendLines({rateLimitsLine + "\r", accountUsageLine}) + "finish()");
    const auto response = fetch(fake);
    ASSERT_TRUE(response.hasValue());
    EXPECT_EQ(response->rateLimits, rateLimitsLine + "\r");
}

TEST_F(CodexAppServerTransportTest, UsageErrorLeavesAccountUsageAbsent) {
    const auto& fake = python(
        "handshake()\n" + sendLines({R"({"id":3,"error":{"code":-32601,"message":"no"}})", rateLimitsLine}) +
        "finish()");
    const auto response = fetch(fake);
    ASSERT_TRUE(response.hasValue());
    EXPECT_EQ(response->rateLimits, rateLimitsLine);
    EXPECT_FALSE(response->accountUsage.has_value());
}

TEST_F(CodexAppServerTransportTest, ErrorOnInitializeIsAnRpcError) {
    const auto& fake = python(R"(receive()
send('{"id":1,"error":{"code":-32600,"message":"Invalid request"}}')
finish())");
    const auto response = fetch(fake);
    ASSERT_FALSE(response.hasValue());
    EXPECT_EQ(response.error(), CodexProviderError::rpcError(-32600));
}

TEST_F(CodexAppServerTransportTest, ErrorOnRateLimitsIsAnRpcErrorEvenAfterUsage) {
    const auto& fake = python(
        "handshake()\n" + sendLines({accountUsageLine, R"({"error":{"code":-32600,"message":"x"},"id":2})"}) +
        "finish()");
    const auto response = fetch(fake);
    ASSERT_FALSE(response.hasValue());
    EXPECT_EQ(response.error(), CodexProviderError::rpcError(-32600));
}

class MalformedLineTest : public CodexAppServerTransportTest,
                          public ::testing::WithParamInterface<std::string> {};

TEST_P(MalformedLineTest, FailsTheExchange) {
    const auto& fake =
        python("handshake()\n" + sendLines({GetParam(), rateLimitsLine, accountUsageLine}) + "finish()");
    const auto response = fetch(fake);
    ASSERT_FALSE(response.hasValue());
    EXPECT_EQ(response.error().kind, Kind::malformedLine);
}

INSTANTIATE_TEST_SUITE_P(Lines, MalformedLineTest,
                         ::testing::Values(R"({"id":"2","result":{}})", "\r",
                                           R"({"id":2,"error":{"message":"x"}})", R"({"id":2.5,"result":{}})",
                                           "not json", "[2]", R"({"id":2,"error":7})",
                                           R"({"id":2,"result":{}} trailing)"));

class OutputLimitTest : public CodexAppServerTransportTest, public ::testing::WithParamInterface<int> {};

TEST_P(OutputLimitTest, CountsEveryByteOfStandardOutput) {
    const std::vector<std::string> lines{R"({"id":1,"result":{}})", notificationLine, rateLimitsLine,
                                         accountUsageLine};
    std::int64_t total = 0;
    for (const auto& line : lines) {
        total += static_cast<std::int64_t>(line.size()) + 1;
    }
    const auto& fake = python("receive()\n" + sendLines({lines[0]}) + "for _ in range(3):\n    receive()\n" +
                              sendLines({lines[1], lines[2], lines[3]}) + "finish()");
    const std::int64_t limit = total + GetParam();
    const auto response = fetch(fake, 10, limit);
    if (limit >= total) {
        EXPECT_TRUE(response.hasValue());
    } else {
        ASSERT_FALSE(response.hasValue());
        EXPECT_EQ(response.error().kind, Kind::outputLimitExceeded);
    }
}

INSTANTIATE_TEST_SUITE_P(AroundTheLimit, OutputLimitTest, ::testing::Values(0, -1, 1));

TEST_F(CodexAppServerTransportTest, FloodWithoutLineFeedHitsTheLimit) {
    const auto& fake = shell("exec cat /dev/zero");
    const auto response = fetch(fake, 10, 256 * 1024);
    ASSERT_FALSE(response.hasValue());
    EXPECT_EQ(response.error().kind, Kind::outputLimitExceeded);
}

TEST_F(CodexAppServerTransportTest, StandardErrorFloodIsDiscarded) {
    const auto& fake = python(R"(import threading
def flood():
    while True:
        sys.stderr.write("x" * 65536)
threading.Thread(target=flood, daemon=True).start()
handshake()
)" + sendLines({rateLimitsLine, accountUsageLine}) +
                              "finish()");
    const auto response = fetch(fake, 10, 4096);
    ASSERT_TRUE(response.hasValue());
}

TEST_F(CodexAppServerTransportTest, ExitBeforeRateLimitsIsStreamEnded) {
    const auto& fake = python("handshake()\n" + sendLines({accountUsageLine}) + "sys.exit(0)");
    const auto response = fetch(fake);
    ASSERT_FALSE(response.hasValue());
    EXPECT_EQ(response.error().kind, Kind::streamEnded);
}

TEST_F(CodexAppServerTransportTest, ExitAfterRateLimitsKeepsThem) {
    const auto& fake = python("handshake()\n" + sendLines({rateLimitsLine}) + "sys.exit(0)");
    const auto response = fetch(fake);
    ASSERT_TRUE(response.hasValue());
    EXPECT_EQ(response->rateLimits, rateLimitsLine);
    EXPECT_FALSE(response->accountUsage.has_value());
}

TEST_F(CodexAppServerTransportTest, UnfinishedLineAtEndOfStreamIsNotHandled) {
    const auto& fake =
        python("handshake()\nsend_raw(" + pythonLiteral(rateLimitsLine) + ".encode())\nsys.exit(0)");
    const auto response = fetch(fake);
    ASSERT_FALSE(response.hasValue());
    EXPECT_EQ(response.error().kind, Kind::streamEnded);
}

TEST_F(CodexAppServerTransportTest, SilentServerTimesOutAfterTheDeadline) {
    const auto& fake = shell("exec sleep 60");
    const auto start = std::chrono::steady_clock::now();
    const auto response = fetch(fake, 0.3);
    const auto elapsed = std::chrono::steady_clock::now() - start;
    ASSERT_FALSE(response.hasValue());
    EXPECT_EQ(response.error().kind, Kind::timedOut);
    EXPECT_GE(elapsed, std::chrono::milliseconds(300));
}

TEST_F(CodexAppServerTransportTest, ServerIgnoringSigtermIsKilled) {
    const auto& fake = shell("trap '' TERM\nexec sleep 60");
    const auto response = fetch(fake, 0.2);
    ASSERT_FALSE(response.hasValue());
    EXPECT_EQ(response.error().kind, Kind::timedOut);
}

TEST_F(CodexAppServerTransportTest, DeadlineAfterRateLimitsKeepsThem) {
    const auto& fake = python("handshake()\n" + sendLines({rateLimitsLine}) + "finish()");
    const auto response = fetch(fake, 0.5);
    ASSERT_TRUE(response.hasValue());
    EXPECT_EQ(response->rateLimits, rateLimitsLine);
    EXPECT_FALSE(response->accountUsage.has_value());
}

TEST_F(CodexAppServerTransportTest, NonPositiveTimeoutEndsBeforeReading) {
    for (const double timeout : {0.0, -1.0, std::nan("")}) {
        const auto& fake =
            python("handshake()\n" + sendLines({rateLimitsLine, accountUsageLine}) + "finish()");
        const auto response = fetch(fake, timeout);
        ASSERT_FALSE(response.hasValue());
        EXPECT_EQ(response.error().kind, Kind::timedOut);
    }
}

TEST_F(CodexAppServerTransportTest, HugeTimeoutDoesNotOverflowTheWait) {
    for (const double timeout : {3e6, 1e300, std::numeric_limits<double>::infinity()}) {
        const auto& fake =
            python("handshake()\n" + sendLines({rateLimitsLine, accountUsageLine}) + "finish()");
        EXPECT_TRUE(fetch(fake, timeout).hasValue()) << timeout;
    }
}

TEST_F(CodexAppServerTransportTest, ServerThatClosedItsInputCannotBeWrittenTo) {
    const auto& fake = shell("exec 0<&-\necho '{\"id\":1,\"result\":{}}'\nexec sleep 60");
    const auto response = fetch(fake);
    ASSERT_FALSE(response.hasValue());
    EXPECT_EQ(response.error().kind, Kind::writeFailed);
}

TEST_F(CodexAppServerTransportTest, ExecutableThatCannotStartIsALaunchFailure) {
    testing::ScratchDirectory directory;
    const auto plain = directory.path() / "codex";
    std::ofstream(plain) << "#!/bin/sh\n";
    for (const auto& path : {directory.path() / "missing", plain, directory.path()}) {
        const auto response = CodexAppServerTransport(path, {}, 5, 1024).fetchUsage();
        ASSERT_FALSE(response.hasValue());
        EXPECT_EQ(response.error().kind, Kind::launchFailed) << path;
    }
}

} // namespace
} // namespace gaugewell
