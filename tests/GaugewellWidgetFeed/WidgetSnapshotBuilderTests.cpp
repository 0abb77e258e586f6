#include "GaugewellUI/WidgetFeed/WidgetSnapshotBuilder.h"
#include "ViewStateFixtures.h"

#include <gtest/gtest.h>

namespace gaugewell {
namespace {

using testing::referencePlus;
using testing::viewState;
using testing::windowSample;

const Date buildTime = referencePlus(5000);

TEST(WidgetSnapshotBuilder, TakesTheUsedShareOrOneMinusTheRemainingOne) {
    const struct {
        std::optional<std::string> used;
        std::optional<std::string> remaining;
        std::optional<double> expected; // absent: no window
    } cases[] = {
        {"0.42", "0.9", 0.42}, // the used share wins
        {std::nullopt, "0.3", 0.7},
        {std::nullopt, "0.001", 0.999},
        {std::nullopt, "0.123456789012345678901", 0.876543210987654321099}, // past a Decimal's digits
        {std::nullopt, "1.3", 0.0},
        {std::nullopt, "0", 1.0}, // no digits to complement
        {std::nullopt, std::nullopt, std::nullopt},
    };
    for (const auto& [used, remaining, expected] : cases) {
        SCOPED_TRACE(used.value_or("-") + " used, " + remaining.value_or("-") + " remaining");
        const auto window =
            WidgetSnapshotBuilder::widgetWindow(windowSample({.used = used, .remaining = remaining}));
        EXPECT_EQ(window ? std::optional(window->usedFraction()) : std::nullopt, expected);
    }
}

TEST(WidgetSnapshotBuilder, ServesTheLatestNamedSampleOfEachBucketInKindOrder) {
    const auto weekly = [](const char* used, double observedAt) {
        return windowSample({.bucket = "weekly",
                             .kind = UsageWindowKind::sevenDay,
                             .used = used,
                             .name = "GPT-5 weekly",
                             .observedAt = observedAt});
    };
    const std::vector<ProviderViewState> providers{viewState(
        ProviderService::codex,
        {weekly("0.1", 10), windowSample({.used = "0.25", .observedAt = 20, .resetAt = 9000}),
         weekly("0.5", 30),
         windowSample({.bucket = "spark", .kind = UsageWindowKind::modelSpecific, .observedAt = 30})})};
    const auto snapshot = WidgetSnapshotBuilder::build(providers, {}, referencePlus(4000.5), buildTime);
    EXPECT_EQ(snapshot.json(),
              R"({"updatedAt":4000.5,"providers":[{"service":"codex","state":"available","windows":[)"
              R"({"id":"primary","name":"Five-hour","usedFraction":0.25,"resetAt":9000},)"
              R"({"id":"weekly","name":"GPT-5 weekly","usedFraction":0.5}]},)"
              R"({"service":"claude","state":"unavailable","windows":[]}]})");
}

TEST(WidgetSnapshotBuilder, ProviderStateFollowsTheWindowsAndThenTheSignIn) {
    using enum WidgetProviderState;
    using Connection = ProviderConnectionStatus;
    const struct {
        const char* name;
        std::vector<std::optional<std::string>> usedShares; // one window each
        bool hasViewState;
        std::optional<ProviderConnectionStatus> status; // absent: no connection state yet
        WidgetProviderState expected;
    } cases[] = {
        {"AnyShareEvenSignedOut", {std::nullopt, "0.3"}, true, Connection::signedOut, available},
        {"WindowsWithoutShares", {std::nullopt, std::nullopt}, true, Connection::signedIn, unavailable},
        {"NoWindowsSignedOut", {}, true, Connection::signedOut, signInRequired},
        {"NoWindowsNoConnectionState", {}, true, std::nullopt, signInRequired},
        {"NoViewStateSignedOut", {}, false, Connection::signedOut, unavailable},
    };
    for (const auto& [name, usedShares, hasViewState, status, expected] : cases) {
        SCOPED_TRACE(name);
        std::vector<UsageWindowSample> windows;
        for (const auto& share : usedShares) {
            windows.push_back(windowSample({.bucket = "b" + std::to_string(windows.size()), .used = share}));
        }
        std::vector<ProviderViewState> providers;
        if (hasViewState) {
            providers.push_back(viewState(ProviderService::claude, windows));
        }
        std::map<ProviderService, ProviderConnectionState> states;
        if (status) {
            states.emplace(ProviderService::claude,
                           ProviderConnectionState{ProviderService::claude, *status, std::nullopt});
        }
        const auto snapshot = WidgetSnapshotBuilder::build(providers, states, std::nullopt, buildTime);
        EXPECT_EQ(snapshot.updatedAt(), buildTime); // before any refresh
        ASSERT_EQ(snapshot.providers().size(), 2u);
        EXPECT_EQ(snapshot.providers()[1].service(), WidgetProviderService::claude);
        EXPECT_EQ(snapshot.providers()[1].state(), expected);
    }
}

} // namespace
} // namespace gaugewell
