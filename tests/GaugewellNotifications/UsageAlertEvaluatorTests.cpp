#include "GaugewellUI/Notifications/UsageAlertEvaluator.h"
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

TEST(UsageAlertEvaluator, AnnouncesExactlyTheExpectedEventsStepByStep) {
    const struct {
        const char* name;
        bool notifiesOnReset;
        std::vector<Step> steps;
    } cases[] = {
        {"OnlyTheHighestOfSeveralCrossedThresholds", false, {{0.4}, {0.96, {}, {"threshold 95"}}}},
        {"EqualityCrosses", false, {{0.49}, {0.5, {}, {"threshold 50"}}}},
        {"DipWithoutResetKeepsThresholdAcknowledged",
         true,
         {{0.45}, {0.6, {}, {"threshold 50"}}, {0.4}, {0.6}}},
        {"MovedResetTimeIsAResetAndRearmsThresholds",
         true,
         {{0.6, 100}, {0.1, 200, {"reset"}}, {0.5, 200, {"threshold 50"}}}},
        {"ResetRearmsEvenWhenResetsAreNotAnnounced",
         false,
         {{0.6, 100}, {0.1, 200}, {0.5, 200, {"threshold 50"}}}},
        {"ResetSampleAnnouncesNoThresholdAndAcknowledgesWhatItExceeds",
         true,
         {{0.6, 100}, {0.96, 200, {"reset"}}, {0.97, 200}}},
        {"DropFromTwentyFivePercentToFiveIsAReset", true, {{0.25, 100}, {0.05, 100, {"reset"}}}},
        {"DropFromNineteenPercentIsNoReset", true, {{0.19, 100}, {0.0, 100}}},
        {"DropFromExactlyTwentyToExactlyFiveIsAReset", true, {{0.2, 100}, {0.05, 100, {"reset"}}}},
        {"DropToJustAboveFiveIsNoReset", true, {{0.2, 100}, {0.051, 100}}},
        {"DisappearingResetTimeIsNoResetByTime", true, {{0.6, 100}, {0.3}, {0.5}}},
        {"SwitchingOffAndOnStartsFromFirstSight",
         false,
         {{0.45}, {0.8, {}, {"threshold 75"}}, {0.8, {}, {}, false}, {0.92}}},
        {"WindowMissingFromARefreshIsSeenAfreshAfterwards",
         false,
         {{0.45}, {std::nullopt}, {0.8}, {0.92, {}, {"threshold 90"}}}},
        {"OnlyEnabledThresholdsAreAnnounced",
         false,
         {{0.4, {}, {}, true, {0.5, 0.95}}, {0.92, {}, {"threshold 50"}, true, {0.5, 0.95}}}},
        {"ThresholdSwitchedOnBelowTheLastValueIsNotAnnounced",
         false,
         {{0.45, {}, {}, true, {0.75}}, {0.6, {}, {}, true, {0.75}}, {0.7}}},
    };
    for (const auto& [name, notifiesOnReset, steps] : cases) {
        UsageAlertEvaluator evaluator;
        for (std::size_t index = 0; index < steps.size(); ++index) {
            SCOPED_TRACE(std::string(name) + ", step " + std::to_string(index));
            const auto& step = steps[index];
            std::vector<UsageAlertSample> samples;
            if (step.used) {
                samples.push_back(sample(*step.used, step.resetAt));
            }
            std::vector<std::string> events;
            for (const auto& event :
                 evaluator.evaluate(samples, step.enabled, step.thresholds, notifiesOnReset)) {
                EXPECT_EQ(event.sample(), samples.front());
                events.push_back(describe(event));
            }
            EXPECT_EQ(events, step.expected);
        }
    }
}

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
}

} // namespace
} // namespace gaugewell
