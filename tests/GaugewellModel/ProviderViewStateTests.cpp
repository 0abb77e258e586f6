#include "ViewStateFixtures.h"

#include <gtest/gtest.h>

namespace gaugewell {
namespace {

UsageWindowSample window(std::string id, std::string bucket, UsageWindowKind kind, double observedAt) {
    return UsageWindowSample(
        std::move(id), testing::fixedConnectionID(), std::move(bucket), std::nullopt, kind, std::nullopt,
        testing::referencePlus(observedAt), std::nullopt, std::nullopt, std::nullopt, std::nullopt,
        std::nullopt, Decimal::parse("0.5"), std::nullopt, std::nullopt, std::nullopt, std::nullopt,
        MeasurementAuthority::vendorAuthoritative, MeasurementConfidence::exact, MeasurementCoverage::account,
        MeasurementFreshness::live, testing::testSource(), std::nullopt);
}

TEST(ProviderViewState, CurrentWindowsKeepTheLatestPerBucketInKindThenBucketOrder) {
    const auto state = testing::viewState(ProviderService::codex,
                                          {window("old-weekly", "weekly", UsageWindowKind::sevenDay, 10),
                                           window("model-b", "b-model", UsageWindowKind::modelSpecific, 10),
                                           window("tie-first", "primary", UsageWindowKind::fiveHour, 20),
                                           window("new-weekly", "weekly", UsageWindowKind::sevenDay, 30),
                                           window("tie-second", "primary", UsageWindowKind::fiveHour, 20),
                                           window("model-a", "a-model", UsageWindowKind::modelSpecific, 5)});
    std::vector<std::string> ids;
    for (const auto& current : state.currentWindows()) {
        ids.push_back(current.id());
    }
    EXPECT_EQ(ids, (std::vector<std::string>{"tie-first", "new-weekly", "model-a", "model-b"}));
}

} // namespace
} // namespace gaugewell
