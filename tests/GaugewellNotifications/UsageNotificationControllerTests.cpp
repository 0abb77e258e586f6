#include "GaugewellUI/Notifications/UsageNotificationController.h"
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
    int requests = 0;
    std::vector<NotificationRequest> posted;

    QFuture<NotificationAuthorization> authorization() override { return finished(current); }
    QFuture<NotificationAuthorization> requestAuthorization() override {
        ++requests;
        current = afterRequest;
        return finished(current);
    }
    QFuture<std::optional<NotificationPostError>> post(NotificationRequest request) override {
        posted.push_back(std::move(request));
        return finished(std::optional<NotificationPostError>());
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

TEST_F(UsageNotificationControllerTest, PermissionFollowsTheServiceAndAlertsSwitchedOnStandForConsent) {
    int changes = 0;
    QObject::connect(&controller, &UsageNotificationController::permissionChanged, [&changes] { ++changes; });
    // Alerts switched on in an earlier run stand for consent; a service that keeps saying "not
    // determined" is asked once, not in a loop.
    backend->afterRequest = NotificationAuthorization::notDetermined;
    ASSERT_TRUE(testing::waitForFuture(controller.refreshPermission()));
    EXPECT_EQ(backend->requests, 1);
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
    EXPECT_EQ(backend->requests, 1);
    EXPECT_EQ(changes, 4); // only real changes are announced
}

TEST_F(UsageNotificationControllerTest, PostsThresholdAndResetNotificationsWithTheirTexts) {
    defaults->set(settingsKey::windowReset, true);
    allow();
    const auto providers = [](const char* sessionUsed, const char* weeklyUsed, const char* opusUsed) {
        // An empty bucket name falls back to the kind's name; an older sample of a bucket does not count.
        auto both = codex(
            {window("primary", UsageWindowKind::fiveHour, "0.99", {.name = "", .observedAt = 900}),
             window("primary", UsageWindowKind::fiveHour, sessionUsed, {.name = ""}), weekly(weeklyUsed)});
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

TEST_F(UsageNotificationControllerTest, SettingsChooseTheAnnouncedEvents) {
    using Stored = std::vector<std::pair<std::string, UserDefaultsValue>>;
    const std::pair<Stored, std::vector<std::string>> cases[] = {
        {{}, {"Codex reached 95%"}},
        {{{"notifications.threshold.95", false},
          {"notifications.threshold.90", false},
          {"notifications.threshold.75", false}},
         {"Codex reached 50%"}},
        // Thresholds and resets take booleans only; the master switch is read leniently.
        {{{"notifications.enabled", std::string("yes")},
          {"notifications.threshold.95", std::string("false")},
          {"notifications.threshold.90", 0.0},
          {"notifications.windowReset", std::string("true")}},
         {"Codex reached 95%"}},
        {{{"notifications.windowReset", true}}, {"Codex reached 95%", "Codex limit reset"}},
    };
    for (const auto& [stored, expectedTitles] : cases) {
        auto settings = std::make_shared<InMemoryUserDefaults>();
        settings->set(settingsKey::notificationsEnabled, true);
        for (const auto& [key, value] : stored) {
            settings->set(key, value);
        }
        UsageNotificationController fresh(backend, settings);
        ASSERT_TRUE(testing::waitForFuture(fresh.requestPermission()));
        // 0.3 -> 0.96 (one threshold event: the highest enabled), 0.6 -> 0.01 (a reset).
        ASSERT_TRUE(testing::waitForFuture(fresh.process(codex({session("0.3"), weekly("0.6")}))));
        backend->posted.clear();
        ASSERT_TRUE(testing::waitForFuture(fresh.process(codex({session("0.96"), weekly("0.01")}))));
        EXPECT_EQ(fieldOf(backend->posted, &NotificationRequest::title), expectedTitles);
    }
}

} // namespace
} // namespace gaugewell
