#include "GaugewellUI/Desktop/DesktopApplicationService.h"
#include "GaugewellUI/Desktop/RunningInstance.h"
#include "QtTestSupport.h"

#include <QDBusMessage>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

namespace gaugewell {
namespace {

TEST(ApplicationRequest, AcceptsKnownActionsAndOnlySettingsTakesAPage) {
    using A = ApplicationAction;
    using D = SettingsDestination;
    const struct {
        const char* action;
        std::optional<std::string_view> parameter;
        std::optional<ApplicationRequest> expected;
    } cases[] = {
        {"popup", std::nullopt, ApplicationRequest{A::popup, std::nullopt}},
        {"settings", "menuBar", ApplicationRequest{A::settings, D::menuBar}},
        {"settings", "MenuBar", std::nullopt},
        {"dashboard", "general", std::nullopt},
        {"Popup", std::nullopt, std::nullopt},
    };
    for (const auto& example : cases) {
        EXPECT_EQ(ApplicationRequest::parse(example.action, example.parameter), example.expected)
            << example.action << ' ' << example.parameter.value_or("(none)");
    }
}

class DesktopApplicationServiceTest : public ::testing::Test {
protected:
    void SetUp() override { testing::coreApplication(); }

    // A second connection stands in for another process.
    static QDBusConnection otherProcess(const char* name) {
        return QDBusConnection::connectToBus(QDBusConnection::SessionBus, QString::fromUtf8(name));
    }
};

TEST_F(DesktopApplicationServiceTest, OneInstanceOwnsTheNameAndOthersReachIt) {
    {
        DesktopApplicationService first;
        ASSERT_EQ(first.registerOnBus(), DesktopApplicationService::Registration::primary);
        DesktopApplicationService second(otherProcess("second-launch"));
        EXPECT_EQ(second.registerOnBus(), DesktopApplicationService::Registration::alreadyRunning);

        QSignalSpy activated(&first, &DesktopApplicationService::activated);
        QSignalSpy requested(&first, &DesktopApplicationService::requested);
        const auto caller = otherProcess("gaugewell-show");
        EXPECT_TRUE(askRunningInstance(std::nullopt, caller));
        EXPECT_TRUE(QTest::qWaitFor([&] { return activated.count() == 1; }, 2000));

        const ApplicationRequest settings{ApplicationAction::settings, SettingsDestination::general};
        EXPECT_TRUE(askRunningInstance(settings, caller));
        ASSERT_TRUE(QTest::qWaitFor([&] { return requested.count() == 1; }, 2000));
        EXPECT_EQ(requested.front().front().value<ApplicationRequest>(), settings);

        auto unknown = QDBusMessage::createMethodCall(
            DesktopApplicationService::busName, DesktopApplicationService::objectPath,
            DesktopApplicationService::interfaceName, QStringLiteral("ActivateAction"));
        unknown << QStringLiteral("format-disk") << QVariantList() << QVariantMap();
        EXPECT_EQ(caller.call(unknown, QDBus::BlockWithGui, 2000).type(), QDBusMessage::ErrorMessage);
    }
    const auto afterQuit = askRunningInstance(std::nullopt, otherProcess("after-quit"));
    ASSERT_FALSE(afterQuit);
    EXPECT_EQ(afterQuit.error(), RunningInstanceError::notRunning);
}

} // namespace
} // namespace gaugewell
