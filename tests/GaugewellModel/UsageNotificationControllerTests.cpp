#include "GaugewellUI/Model/UsageNotificationController.h"
#include "Platform/InMemoryUserDefaults.h"
#include "Platform/SettingsKeys.h"
#include "QtTestSupport.h"
#include "ViewStateFixtures.h"

#include <QPromise>
#include <QRegularExpression>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace gaugewell {
namespace {

using ::testing::ElementsAre;

template <class T> QFuture<T> finished(T value) {
    QPromise<T> promise;
    promise.start();
    promise.addResult(std::move(value));
    promise.finish();
    return promise.future();
}

// Answers at once with what the test set; records every request.
class FakeNotificationBackend final : public NotificationBackend {
public:
    NotificationAuthorization current = NotificationAuthorization::notDetermined;
    NotificationAuthorization afterRequest = NotificationAuthorization::authorized;
    std::set<std::size_t> refusedPosts; // by position among all posts
    int requests = 0;
    std::vector<NotificationRequest> posted;

    QFuture<NotificationAuthorization> authorization() override { return finished(current); }
    QFuture<NotificationAuthorization> requestAuthorization() override {
        ++requests;
        current = afterRequest;
        return finished(current);
    }
    QFuture<std::optional<NotificationPostError>> post(NotificationRequest request) override {
        const bool refused = refusedPosts.contains(posted.size());
        posted.push_back(std::move(request));
        return finished(refused ? std::optional(NotificationPostError::rejected) : std::nullopt);
    }
};

using testing::viewState;

// A window with a fixed reset time, so only the drop in use can make a reset.
UsageWindowSample window(std::string bucket, UsageWindowKind kind, std::optional<std::string> used,
                         testing::WindowFields fields = {}) {
    fields.bucket = std::move(bucket);
    fields.kind = kind;
    fields.used = std::move(used);
    fields.resetAt = 5000;
    return testing::windowSample(fields);
}

UsageWindowSample session(const char* used) {
    return window("primary", UsageWindowKind::fiveHour, used);
}

UsageWindowSample weekly(const char* used) {
    return window("weekly", UsageWindowKind::sevenDay, used);
}

std::vector<ProviderViewState> codex(std::vector<UsageWindowSample> windows) {
    return {viewState(ProviderService::codex, std::move(windows))};
}

std::vector<std::string> fieldOf(const std::vector<NotificationRequest>& requests,
                                 std::string NotificationRequest::*field) {
    std::vector<std::string> values;
    for (const auto& request : requests) {
        values.push_back(request.*field);
    }
    return values;
}

class UsageNotificationControllerTest : public ::testing::Test {
protected:
    void SetUp() override {
        testing::coreApplication();
        defaults->set(settingsKey::notificationsEnabled, true);
    }

    void allow() {
        ASSERT_TRUE(testing::waitForFuture(controller.requestPermission()));
        ASSERT_EQ(controller.permission(), UsageNotificationPermission::allowed);
    }

    // What one evaluation posted.
    std::vector<NotificationRequest> process(const std::vector<ProviderViewState>& providers) {
        const auto before = backend->posted.size();
        EXPECT_TRUE(testing::waitForFuture(controller.process(providers)));
        return {backend->posted.begin() + static_cast<std::ptrdiff_t>(before), backend->posted.end()};
    }

    std::shared_ptr<FakeNotificationBackend> backend = std::make_shared<FakeNotificationBackend>();
    std::shared_ptr<InMemoryUserDefaults> defaults = std::make_shared<InMemoryUserDefaults>();
    UsageNotificationController controller{backend, defaults};
};

TEST_F(UsageNotificationControllerTest, WithoutABackendPermissionIsUnavailableAndNothingIsAsked) {
    UsageNotificationController alone(nullptr, defaults);
    EXPECT_EQ(alone.permission(), UsageNotificationPermission::unavailable);
    EXPECT_TRUE(testing::waitForFuture(alone.requestPermission()));
    EXPECT_TRUE(testing::waitForFuture(alone.refreshPermission()));
    EXPECT_EQ(alone.permission(), UsageNotificationPermission::unavailable);
    EXPECT_TRUE(testing::waitForFuture(alone.process(codex({}))));
}

TEST_F(UsageNotificationControllerTest, PermissionFollowsTheServiceAndRequestingAllows) {
    EXPECT_EQ(controller.permission(), UsageNotificationPermission::notRequested);
    defaults->set(settingsKey::notificationsEnabled, false);
    const std::pair<NotificationAuthorization, UsageNotificationPermission> mapping[] = {
        {NotificationAuthorization::unavailable, UsageNotificationPermission::unavailable},
        {NotificationAuthorization::notDetermined, UsageNotificationPermission::notRequested},
        {NotificationAuthorization::denied, UsageNotificationPermission::denied},
        {NotificationAuthorization::authorized, UsageNotificationPermission::allowed}};
    for (const auto& [authorization, permission] : mapping) {
        backend->current = authorization;
        ASSERT_TRUE(testing::waitForFuture(controller.refreshPermission()));
        EXPECT_EQ(controller.permission(), permission) << rawValue(permission);
    }
    EXPECT_EQ(backend->requests, 0);

    backend->current = NotificationAuthorization::notDetermined;
    ASSERT_TRUE(testing::waitForFuture(controller.refreshPermission()));
    int changes = 0;
    QObject::connect(&controller, &UsageNotificationController::permissionChanged, [&changes] { ++changes; });
    ASSERT_TRUE(testing::waitForFuture(controller.requestPermission()));
    EXPECT_EQ(backend->requests, 1);
    EXPECT_EQ(controller.permission(), UsageNotificationPermission::allowed);
    EXPECT_EQ(changes, 1);
}

TEST_F(UsageNotificationControllerTest, AlertsSwitchedOnEarlierStandForConsentOnTheNextLaunch) {
    ASSERT_TRUE(testing::waitForFuture(controller.refreshPermission()));
    EXPECT_EQ(backend->requests, 1);
    EXPECT_EQ(controller.permission(), UsageNotificationPermission::allowed);

    // A service that keeps saying "not determined" is asked once, not in a loop.
    backend->current = NotificationAuthorization::notDetermined;
    backend->afterRequest = NotificationAuthorization::notDetermined;
    ASSERT_TRUE(testing::waitForFuture(controller.refreshPermission()));
    EXPECT_EQ(backend->requests, 2);
    EXPECT_EQ(controller.permission(), UsageNotificationPermission::notRequested);
}

TEST_F(UsageNotificationControllerTest, PostsThresholdAndResetNotificationsWithTheirTexts) {
    defaults->set(settingsKey::windowReset, true);
    allow();
    const auto providers = [](const char* sessionUsed, const char* weeklyUsed, const char* opusUsed) {
        auto both = codex({session(sessionUsed), weekly(weeklyUsed)});
        both.push_back(viewState(ProviderService::claude, {window("opus", UsageWindowKind::modelSpecific,
                                                                  opusUsed, {.modelID = "claude-opus"})}));
        return both;
    };
    EXPECT_TRUE(process(providers("0.4", "0.3", "0.1")).empty());
    const auto posted = process(providers("0.915", "0.01", "0.505"));
    EXPECT_THAT(fieldOf(posted, &NotificationRequest::title),
                ElementsAre("Codex reached 90%", "Codex limit reset", "Claude reached 50%"));
    EXPECT_THAT(
        fieldOf(posted, &NotificationRequest::body),
        ElementsAre("Session has 92% used.", "Weekly is available again.", "claude-opus has 51% used."));
    const QRegularExpression identifier(
        QStringLiteral("^usage\\.[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}$"));
    const auto identifiers = fieldOf(posted, &NotificationRequest::identifier);
    for (const auto& text : identifiers) {
        EXPECT_TRUE(identifier.match(QString::fromStdString(text)).hasMatch()) << text;
    }
    EXPECT_EQ(std::set(identifiers.begin(), identifiers.end()).size(), posted.size());
}

TEST_F(UsageNotificationControllerTest, WindowNamesPreferTheBucketNameThenTheKind) {
    allow();
    const auto windows = [](const char* used) {
        return codex({window("a", UsageWindowKind::fiveHour, used, {.name = "5h limit"}),
                      window("b", UsageWindowKind::fiveHour, used, {.name = ""}),
                      window("c", UsageWindowKind::modelSpecific, used, {.modelID = ""}),
                      window("d", UsageWindowKind::custom, used), window("e", UsageWindowKind::unknown, used),
                      // A remaining share alone is not read as use.
                      window("f", UsageWindowKind::unknown, std::nullopt, {.remaining = "0.5"})});
    };
    process(windows("0.2"));
    EXPECT_THAT(fieldOf(process(windows("0.6")), &NotificationRequest::body),
                ElementsAre("5h limit has 60% used.", "Session has 60% used.", "Model has 60% used.",
                            "Custom has 60% used.", "Window has 60% used."));
}

TEST_F(UsageNotificationControllerTest, OnlyTheLatestSampleOfABucketCounts) {
    allow();
    process(codex({session("0.3")}));
    const auto posted =
        process(codex({window("primary", UsageWindowKind::fiveHour, "0.8", {.observedAt = 900}),
                       window("primary", UsageWindowKind::fiveHour, "0.55", {.observedAt = 1100})}));
    EXPECT_THAT(fieldOf(posted, &NotificationRequest::body), ElementsAre("Session has 55% used."));
}

TEST_F(UsageNotificationControllerTest, RefusedPostDoesNotStopTheRestOfTheBatch) {
    allow();
    backend->refusedPosts = {0};
    const auto windows = [](const char* used) { return codex({session(used), weekly(used)}); };
    process(windows("0.1"));
    EXPECT_EQ(process(windows("0.8")).size(), 2u);
    // The refused alert is not retried: the evaluation already counted it.
    EXPECT_TRUE(process(windows("0.8")).empty());
}

TEST_F(UsageNotificationControllerTest, NothingIsPostedWhenSwitchedOffOrNotAllowed) {
    const auto at = [](const char* used) { return codex({session(used)}); };
    // Not allowed: the evaluation still moves on, so nothing is announced later for this crossing.
    process(at("0.1"));
    EXPECT_TRUE(process(at("0.6")).empty());
    allow();
    EXPECT_TRUE(process(at("0.6")).empty());

    defaults->set(settingsKey::notificationsEnabled, false);
    EXPECT_TRUE(process(at("0.8")).empty());
    EXPECT_TRUE(controller.evaluator().states().empty());
}

struct SettingsCase {
    const char* name;
    std::vector<std::pair<std::string, UserDefaultsValue>> stored;
    std::vector<std::string> expectedTitles;
};

void PrintTo(const SettingsCase& settings, std::ostream* out) {
    *out << settings.name;
}

class UsageNotificationSettings : public UsageNotificationControllerTest,
                                  public ::testing::WithParamInterface<SettingsCase> {};

TEST_P(UsageNotificationSettings, ChooseTheAnnouncedEvents) {
    for (const auto& [key, value] : GetParam().stored) {
        defaults->set(key, value);
    }
    allow();
    // 0.3 -> 0.96 (one threshold event: the highest enabled), 0.6 -> 0.01 (a reset).
    process(codex({session("0.3"), weekly("0.6")}));
    const auto posted = process(codex({session("0.96"), weekly("0.01")}));
    EXPECT_EQ(fieldOf(posted, &NotificationRequest::title), GetParam().expectedTitles);
}

INSTANTIATE_TEST_SUITE_P(Keys, UsageNotificationSettings,
                         ::testing::Values(SettingsCase{"Defaults", {}, {"Codex reached 95%"}},
                                           SettingsCase{"HighestSwitchedOff",
                                                        {{"notifications.threshold.95", false}},
                                                        {"Codex reached 90%"}},
                                           SettingsCase{"OnlyLowest",
                                                        {{"notifications.threshold.95", false},
                                                         {"notifications.threshold.90", false},
                                                         {"notifications.threshold.75", false}},
                                                        {"Codex reached 50%"}},
                                           SettingsCase{"NonBooleanValuesKeepTheDefault",
                                                        {{"notifications.threshold.95", std::string("false")},
                                                         {"notifications.threshold.90", 0.0},
                                                         {"notifications.windowReset", std::string("true")}},
                                                        {"Codex reached 95%"}},
                                           SettingsCase{"ResetsWhenSwitchedOn",
                                                        {{"notifications.windowReset", true}},
                                                        {"Codex reached 95%", "Codex limit reset"}},
                                           SettingsCase{"MasterSwitchReadLeniently",
                                                        {{"notifications.enabled", std::string("yes")}},
                                                        {"Codex reached 95%"}}),
                         [](const auto& info) { return std::string(info.param.name); });

} // namespace
} // namespace gaugewell
