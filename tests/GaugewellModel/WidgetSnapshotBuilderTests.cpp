#include "GaugewellUI/Model/WidgetSnapshotBuilder.h"
#include "RecordFixtures.h"

#include <gtest/gtest.h>

namespace gaugewell {
namespace {

using testing::referencePlus;

struct SampleFields {
    std::string bucket;
    UsageWindowKind kind = UsageWindowKind::fiveHour;
    std::optional<std::string> used = std::nullopt;
    std::optional<std::string> remaining = std::nullopt;
    double observedAt = 100;
    std::optional<std::string> name = std::nullopt;
    std::optional<double> resetAt = std::nullopt;
};

UsageWindowSample sample(const SampleFields& fields) {
    const auto decimal = [](const std::optional<std::string>& text) -> std::optional<Decimal> {
        return text ? Decimal::parse(*text) : std::nullopt;
    };
    return UsageWindowSample(
        fields.bucket + "@" + std::to_string(fields.observedAt), testing::fixedConnectionID(), fields.bucket,
        fields.name, fields.kind, std::nullopt, referencePlus(fields.observedAt), std::nullopt, std::nullopt,
        std::nullopt, std::nullopt,
        fields.resetAt ? std::optional(referencePlus(*fields.resetAt)) : std::nullopt, decimal(fields.used),
        decimal(fields.remaining), std::nullopt, std::nullopt, std::nullopt,
        MeasurementAuthority::vendorAuthoritative, MeasurementConfidence::exact, MeasurementCoverage::account,
        MeasurementFreshness::live, testing::testSource(), std::nullopt);
}

ProviderViewState viewState(ProviderService service, std::vector<UsageWindowSample> windows) {
    return ProviderViewState{
        service,
        ProviderDescriptor(std::string(providerID(service)), std::string(displayName(service)), std::nullopt),
        ProviderAvailability::availableWithLimitations,
        {},
        std::move(windows),
        {},
        {}};
}

std::map<ProviderService, ProviderConnectionState> connections(ProviderConnectionStatus codex,
                                                               ProviderConnectionStatus claude) {
    return {{ProviderService::codex, {ProviderService::codex, codex, std::nullopt}},
            {ProviderService::claude, {ProviderService::claude, claude, std::nullopt}}};
}

const Date buildTime = referencePlus(5000);

struct ShareCase {
    std::optional<std::string> used;
    std::optional<std::string> remaining;
    std::optional<double> expected; // absent: no window
};

class WidgetWindowShareTest : public ::testing::TestWithParam<ShareCase> {};

TEST_P(WidgetWindowShareTest, TakesTheUsedShareOrOneMinusTheRemainingOneClamped) {
    const auto window = WidgetSnapshotBuilder::widgetWindow(
        sample({.bucket = "primary", .used = GetParam().used, .remaining = GetParam().remaining}));
    ASSERT_EQ(window.has_value(), GetParam().expected.has_value());
    if (window) {
        EXPECT_EQ(window->usedFraction(), *GetParam().expected);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Shares, WidgetWindowShareTest,
    ::testing::Values(ShareCase{"0.42", std::nullopt, 0.42}, ShareCase{"0.42", "0.9", 0.42},
                      ShareCase{std::nullopt, "0.3", 0.7}, ShareCase{std::nullopt, "0.001", 0.999},
                      ShareCase{std::nullopt, "0.123456789012345678901", 0.876543210987654321099},
                      ShareCase{"1.2", std::nullopt, 1.0}, ShareCase{"-0.1", std::nullopt, 0.0},
                      ShareCase{std::nullopt, "1.3", 0.0}, ShareCase{std::nullopt, "-0.2", 1.0},
                      ShareCase{std::nullopt, "0", 1.0},
                      ShareCase{std::nullopt, std::nullopt, std::nullopt}));

TEST(WidgetSnapshotBuilder, NamesAWindowByItsBucketNameOrElseByItsKind) {
    const std::vector<std::pair<UsageWindowKind, std::string>> expected{
        {UsageWindowKind::fiveHour, "Five-hour"},
        {UsageWindowKind::sevenDay, "Weekly"},
        {UsageWindowKind::modelSpecific, "Model"},
        {UsageWindowKind::custom, "Usage"},
        {UsageWindowKind::unknown, "Usage"}};
    for (const auto& [kind, name] : expected) {
        EXPECT_EQ(
            WidgetSnapshotBuilder::widgetWindow(sample({.bucket = "b", .kind = kind, .used = "0.1"}))->name(),
            name);
    }
    EXPECT_EQ(
        WidgetSnapshotBuilder::widgetWindow(sample({.bucket = "b", .used = "0.1", .name = "GPT-5 weekly"}))
            ->name(),
        "GPT-5 weekly");
}

TEST(WidgetSnapshotBuilder, ServesTheLatestSampleOfEachBucketInKindOrderAsExactJson) {
    const std::vector<ProviderViewState> providers{
        viewState(
            ProviderService::codex,
            {sample({.bucket = "weekly", .kind = UsageWindowKind::sevenDay, .used = "0.1", .observedAt = 10}),
             sample({.bucket = "primary", .used = "0.25", .observedAt = 20, .resetAt = 9000}),
             sample({.bucket = "weekly", .kind = UsageWindowKind::sevenDay, .used = "0.5", .observedAt = 30}),
             sample({.bucket = "spark", .kind = UsageWindowKind::modelSpecific, .observedAt = 30})}),
        viewState(ProviderService::claude, {})};
    const auto snapshot = WidgetSnapshotBuilder::build(
        providers, connections(ProviderConnectionStatus::signedIn, ProviderConnectionStatus::signedOut),
        referencePlus(4000.5), buildTime);
    EXPECT_EQ(snapshot.json(),
              R"({"updatedAt":4000.5,"providers":[{"service":"codex","state":"available","windows":[)"
              R"({"id":"primary","name":"Five-hour","usedFraction":0.25,"resetAt":9000},)"
              R"({"id":"weekly","name":"Weekly","usedFraction":0.5}]},)"
              R"({"service":"claude","state":"signInRequired","windows":[]}]})");
}

struct StateCase {
    std::vector<std::string> usedShares; // one window each; "" for a window without a share
    bool hasViewState;
    std::optional<ProviderConnectionStatus> status; // absent: no connection state yet
    WidgetProviderState expected;
};

class WidgetProviderStateTest : public ::testing::TestWithParam<StateCase> {};

TEST_P(WidgetProviderStateTest, FollowsTheWindowsAndThenTheSignIn) {
    std::vector<UsageWindowSample> windows;
    for (const auto& share : GetParam().usedShares) {
        windows.push_back(sample({.bucket = "b" + std::to_string(windows.size()),
                                  .used = share.empty() ? std::nullopt : std::optional(share)}));
    }
    std::vector<ProviderViewState> providers;
    if (GetParam().hasViewState) {
        providers.push_back(viewState(ProviderService::claude, windows));
    }
    std::map<ProviderService, ProviderConnectionState> states;
    if (GetParam().status) {
        states.emplace(ProviderService::claude,
                       ProviderConnectionState{ProviderService::claude, *GetParam().status, std::nullopt});
    }
    const auto snapshot = WidgetSnapshotBuilder::build(providers, states, std::nullopt, buildTime);
    ASSERT_EQ(snapshot.providers().size(), 2u);
    EXPECT_EQ(snapshot.providers()[1].service(), WidgetProviderService::claude);
    EXPECT_EQ(snapshot.providers()[1].state(), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    States, WidgetProviderStateTest,
    ::testing::Values(
        StateCase{{"0.3"}, true, ProviderConnectionStatus::signedIn, WidgetProviderState::available},
        StateCase{{"", "0.3"}, true, ProviderConnectionStatus::signedOut, WidgetProviderState::available},
        StateCase{{"", ""}, true, ProviderConnectionStatus::signedIn, WidgetProviderState::unavailable},
        StateCase{{}, true, ProviderConnectionStatus::signedOut, WidgetProviderState::signInRequired},
        StateCase{{}, true, ProviderConnectionStatus::failed, WidgetProviderState::signInRequired},
        StateCase{{}, true, std::nullopt, WidgetProviderState::signInRequired},
        StateCase{{}, false, ProviderConnectionStatus::signedIn, WidgetProviderState::unavailable},
        StateCase{{}, false, ProviderConnectionStatus::signedOut, WidgetProviderState::unavailable}));

TEST(WidgetSnapshotBuilder, ListsCodexThenClaudeAndStampsTheBuildTimeBeforeAnyRefresh) {
    const std::vector<ProviderViewState> providers{
        viewState(ProviderService::claude, {sample({.bucket = "five_hour", .used = "0.3"})})};
    const auto snapshot = WidgetSnapshotBuilder::build(providers, {}, std::nullopt, buildTime);
    EXPECT_EQ(snapshot.updatedAt(), buildTime);
    ASSERT_EQ(snapshot.providers().size(), 2u);
    EXPECT_EQ(snapshot.providers()[0],
              WidgetProviderUsage(WidgetProviderService::codex, WidgetProviderState::unavailable, {}));
    EXPECT_EQ(snapshot.providers()[1].service(), WidgetProviderService::claude);
    EXPECT_EQ(snapshot.providers()[1].windows().size(), 1u);
}

} // namespace
} // namespace gaugewell
