#include "GaugewellUI/Model/UsageAlertEvaluator.h"
#include "RecordFixtures.h"

#include <gtest/gtest.h>

namespace gaugewell {
namespace {

const std::vector<double> allThresholds{0.5, 0.75, 0.9, 0.95};

// One refresh of a single window; an absent `used` means the refresh did not report the window.
struct Step {
    std::optional<double> used;
    std::optional<double> resetAt = std::nullopt;
    std::vector<std::string> expected = {};
    bool enabled = true;
    std::vector<double> thresholds = allThresholds;
};

struct EvaluatorCase {
    const char* name;
    bool notifiesOnReset;
    std::vector<Step> steps;
};

UsageAlertSample sample(double used, std::optional<double> resetAt) {
    return UsageAlertSample{"app.gaugewell.codex.subscription",
                            "Codex",
                            "primary",
                            "Session",
                            used,
                            resetAt ? std::optional(testing::referencePlus(*resetAt)) : std::nullopt};
}

std::string describe(const UsageAlertEvent& event) {
    return event.kind() == UsageAlertEvent::Kind::reset ? "reset"
                                                        : "threshold " + std::to_string(*event.percentage());
}

class UsageAlertEvaluatorCases : public ::testing::TestWithParam<EvaluatorCase> {};

TEST_P(UsageAlertEvaluatorCases, AnnouncesExactlyTheExpectedEvents) {
    UsageAlertEvaluator evaluator;
    int index = 0;
    for (const auto& step : GetParam().steps) {
        std::vector<UsageAlertSample> samples;
        if (step.used) {
            samples.push_back(sample(*step.used, step.resetAt));
        }
        std::vector<std::string> events;
        for (const auto& event :
             evaluator.evaluate(samples, step.enabled, step.thresholds, GetParam().notifiesOnReset)) {
            EXPECT_EQ(event.sample(), samples.front());
            events.push_back(describe(event));
        }
        EXPECT_EQ(events, step.expected) << "step " << index;
        ++index;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Steps, UsageAlertEvaluatorCases,
    ::testing::Values(
        EvaluatorCase{"FirstSightIsSilentThenTheNextThresholdIsAnnounced",
                      false,
                      {{0.8}, {0.92, std::nullopt, {"threshold 90"}}}},
        EvaluatorCase{"OnlyTheHighestOfSeveralCrossedThresholds",
                      false,
                      {{0.4}, {0.96, std::nullopt, {"threshold 95"}}}},
        EvaluatorCase{"EqualityCrosses", false, {{0.49}, {0.5, std::nullopt, {"threshold 50"}}}},
        EvaluatorCase{"DipWithoutResetKeepsThresholdAcknowledged",
                      true,
                      {{0.45}, {0.6, std::nullopt, {"threshold 50"}}, {0.4}, {0.6}}},
        EvaluatorCase{"MovedResetTimeIsAResetAndRearmsThresholds",
                      true,
                      {{0.6, 100}, {0.1, 200, {"reset"}}, {0.5, 200, {"threshold 50"}}}},
        EvaluatorCase{"ResetRearmsEvenWhenResetsAreNotAnnounced",
                      false,
                      {{0.6, 100}, {0.1, 200}, {0.5, 200, {"threshold 50"}}}},
        EvaluatorCase{"ResetSampleAnnouncesNoThresholdAndAcknowledgesWhatItExceeds",
                      true,
                      {{0.6, 100}, {0.96, 200, {"reset"}}, {0.97, 200}}},
        EvaluatorCase{"DropFromTwentyFivePercentToFiveIsAReset", true, {{0.25, 100}, {0.05, 100, {"reset"}}}},
        EvaluatorCase{"DropFromNineteenPercentIsNoReset", true, {{0.19, 100}, {0.0, 100}}},
        EvaluatorCase{"DisappearingResetTimeIsNoResetByTime", true, {{0.6, 100}, {0.3}, {0.5}}},
        EvaluatorCase{"DisappearingResetTimeStillAllowsTheDropRule",
                      true,
                      {{0.6, 100}, {0.02, std::nullopt, {"reset"}}}},
        EvaluatorCase{"SwitchingOffAndOnStartsFromFirstSight",
                      false,
                      {{0.45},
                       {0.8, std::nullopt, {"threshold 75"}},
                       {0.8, std::nullopt, {}, false},
                       {0.8},
                       {0.92, std::nullopt, {"threshold 90"}}}},
        EvaluatorCase{"WindowMissingFromARefreshIsSeenAfreshAfterwards",
                      false,
                      {{0.45}, {std::nullopt}, {0.8}, {0.92, std::nullopt, {"threshold 90"}}}},
        EvaluatorCase{"OnlyEnabledThresholdsAreAnnounced",
                      false,
                      {{0.4, std::nullopt, {}, true, {0.5, 0.95}},
                       {0.92, std::nullopt, {"threshold 50"}, true, {0.5, 0.95}}}},
        EvaluatorCase{
            "ThresholdSwitchedOnBelowTheLastValueIsNotAnnounced",
            false,
            {{0.45, std::nullopt, {}, true, {0.75}}, {0.6, std::nullopt, {}, true, {0.75}}, {0.7}}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(UsageAlertEvaluator, TracksWindowsPerProviderAndBucketAndKeepsSampleOrder) {
    UsageAlertEvaluator evaluator;
    const auto window = [](std::string provider, std::string bucket, double used) {
        return UsageAlertSample{std::move(provider), "Name", std::move(bucket), "Window", used, std::nullopt};
    };
    evaluator.evaluate(
        {window("claude", "primary", 0.1), window("codex", "primary", 0.7), window("codex", "weekly", 0.2)},
        true, allThresholds, true);
    const std::vector<UsageAlertSample> next{
        window("codex", "weekly", 0.55), window("codex", "primary", 0.01), window("claude", "primary", 0.76)};
    const auto events = evaluator.evaluate(next, true, allThresholds, true);
    EXPECT_EQ(events, (std::vector{UsageAlertEvent::threshold(next[0], 50), UsageAlertEvent::reset(next[1]),
                                   UsageAlertEvent::threshold(next[2], 75)}));

    evaluator.evaluate({window("codex", "weekly", 0.55)}, true, allThresholds, true);
    EXPECT_EQ(evaluator.states().size(), 1u);
    evaluator.evaluate({window("codex", "weekly", 0.55)}, false, allThresholds, true);
    EXPECT_TRUE(evaluator.states().empty());
}

} // namespace
} // namespace gaugewell
