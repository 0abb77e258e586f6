#include "GaugewellUI/Desktop/AutostartEntry.h"
#include "GaugewellUI/Desktop/LoginItemController.h"
#include "TemporaryDirectory.h"

#include <cstdlib>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>

namespace gaugewell {
namespace {

using State = LoginItemController::State;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

std::string readFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::stringstream contents;
    contents << file.rdbuf();
    return contents.str();
}

std::vector<std::string> folderEntries(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

struct ExecCase {
    std::string path;
    std::string argument;
};

class DesktopEntryExecArgument : public ::testing::TestWithParam<ExecCase> {};

TEST_P(DesktopEntryExecArgument, QuotesAndEscapesReservedCharacters) {
    EXPECT_EQ(desktopEntryExecArgument(GetParam().path), GetParam().argument);
}

INSTANTIATE_TEST_SUITE_P(Paths, DesktopEntryExecArgument,
                         ::testing::Values(ExecCase{"/usr/bin/gaugewell", "/usr/bin/gaugewell"},
                                           ExecCase{"/tmp/say \"hi\"/gw", "\"/tmp/say \\\"hi\\\"/gw\""},
                                           ExecCase{"/tmp/$HOME/gw", "\"/tmp/\\$HOME/gw\""},
                                           ExecCase{"/tmp/back\\slash", "\"/tmp/back\\\\\\\\slash\""},
                                           ExecCase{"/tmp/100%/gw", "/tmp/100%%/gw"}));

TEST(AutostartEntry, HiddenCountsOnlyInTheMainGroup) {
    EXPECT_TRUE(desktopEntryIsHidden("[Desktop Entry]\nName=x\nHidden = true\n"));
    EXPECT_FALSE(desktopEntryIsHidden("[Desktop Entry]\nHidden=false\n"));
    EXPECT_FALSE(desktopEntryIsHidden("[Desktop Entry]\n# Hidden=true\n[Desktop Action x]\nHidden=true\n"));
    EXPECT_FALSE(autostartEntryContents("gaugewell"));
    EXPECT_FALSE(autostartEntryContents("/tmp/line\nbreak"));
}

class LoginItemControllerTest : public ::testing::Test {
protected:
    LoginItemController
    controller(const QString& executable = QStringLiteral("/opt/Gauge well/bin/gaugewell")) {
        return LoginItemController(executable, folder);
    }

    testing::TemporaryDirectory home;
    std::filesystem::path folder = home / "config" / "autostart";
    std::filesystem::path entry = folder / "app.gaugewell.Gaugewell.desktop";
};

TEST_F(LoginItemControllerTest, EnablingWritesTheEntryIntoANewFolderAndDisablingRemovesIt) {
    LoginItemController item(QStringLiteral("/opt/Gauge well/bin/gaugewell"), folder);
    int changes = 0;
    QObject::connect(&item, &LoginItemController::changed, [&] { ++changes; });
    item.refresh();
    EXPECT_EQ(item.state(), State::disabled);
    EXPECT_FALSE(item.isEnabled());
    EXPECT_EQ(item.detail(), std::nullopt);

    item.setEnabled(true);
    EXPECT_EQ(item.state(), State::enabled);
    EXPECT_TRUE(item.isEnabled());
    EXPECT_EQ(item.failure(), std::nullopt);
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(readFile(entry), "[Desktop Entry]\n"
                               "Type=Application\n"
                               "Name=Gaugewell\n"
                               "Comment=Subscription usage of Codex and Claude at a glance\n"
                               "Exec=\"/opt/Gauge well/bin/gaugewell\"\n"
                               "Icon=app.gaugewell.Gaugewell\n"
                               "Terminal=false\n"
                               "X-GNOME-Autostart-enabled=true\n");
    // Atomic replacement leaves no temporary beside it.
    EXPECT_THAT(folderEntries(folder), ElementsAre("app.gaugewell.Gaugewell.desktop"));
    EXPECT_EQ(std::filesystem::status(entry).permissions(), std::filesystem::perms(0644));

    item.setEnabled(false);
    EXPECT_EQ(item.state(), State::disabled);
    EXPECT_FALSE(std::filesystem::exists(entry));
    EXPECT_EQ(changes, 2);
}

TEST_F(LoginItemControllerTest, DisablingLeavesEveryOtherEntryAlone) {
    testing::writeFile(folder / "other.desktop", "[Desktop Entry]\nExec=other\n");
    testing::writeFile(folder / "app.gaugewell.Gaugewell.desktop.bak", "kept");
    auto item = controller();
    item.setEnabled(true);
    item.setEnabled(false);
    EXPECT_THAT(folderEntries(folder), ElementsAre("app.gaugewell.Gaugewell.desktop.bak", "other.desktop"));
    EXPECT_EQ(readFile(folder / "other.desktop"), "[Desktop Entry]\nExec=other\n");
}

TEST_F(LoginItemControllerTest, AHiddenEntryIsOffAndEnablingReplacesIt) {
    testing::writeFile(entry, "[Desktop Entry]\nType=Application\nExec=/old/gaugewell\nHidden=true\n");
    auto item = controller(QStringLiteral("/usr/bin/gaugewell"));
    item.refresh();
    EXPECT_EQ(item.state(), State::disabled);
    item.setEnabled(true);
    EXPECT_EQ(item.state(), State::enabled);
    EXPECT_THAT(readFile(entry), HasSubstr("\nExec=/usr/bin/gaugewell\n"));
    EXPECT_FALSE(desktopEntryIsHidden(readFile(entry)));
}

TEST_F(LoginItemControllerTest, NoUsableFolderIsUnavailableAndAFailedSwitchShowsItsError) {
    testing::writeFile(home / "config", "not a folder");
    auto item = controller();
    item.refresh();
    EXPECT_EQ(item.state(), State::unavailable);
    EXPECT_EQ(item.detail(),
              QStringLiteral("Launch at login needs a desktop session with an autostart folder."));

    item.setEnabled(true);
    EXPECT_EQ(item.state(), State::unavailable);
    EXPECT_EQ(item.detail(), QStringLiteral("The autostart folder cannot be created or written."));

    LoginItemController nowhere(QStringLiteral("/usr/bin/gaugewell"), {});
    nowhere.refresh();
    EXPECT_EQ(nowhere.state(), State::unavailable);
}

TEST_F(LoginItemControllerTest, AFailedWriteIsReportedUntilASwitchSucceeds) {
    std::filesystem::create_directories(entry / "occupied");
    auto item = controller();
    item.setEnabled(true);
    EXPECT_EQ(item.state(), State::disabled);
    EXPECT_EQ(item.detail(), QStringLiteral("The autostart entry could not be written."));
    EXPECT_TRUE(std::filesystem::is_directory(entry / "occupied"));

    std::filesystem::remove_all(entry);
    item.setEnabled(true);
    EXPECT_EQ(item.state(), State::enabled);
    EXPECT_EQ(item.detail(), std::nullopt);
}

TEST_F(LoginItemControllerTest, AnExecutablePathThatCannotBeWrittenIsRefused) {
    auto item = controller(QStringLiteral("bin/gaugewell"));
    item.setEnabled(true);
    EXPECT_EQ(item.state(), State::disabled);
    EXPECT_EQ(item.failure(),
              QStringLiteral("The location of the Gaugewell program cannot be used for launch at login."));
    EXPECT_FALSE(std::filesystem::exists(entry));
}

TEST(LoginItemFolder, FollowsXdgConfigHomeAndIgnoresARelativeOne) {
    const auto restore = [](const char* name, const char* value) {
        value ? ::setenv(name, value, 1) : ::unsetenv(name);
    };
    const char* savedConfig = std::getenv("XDG_CONFIG_HOME");
    const std::string config = savedConfig ? savedConfig : "";
    const char* savedHome = std::getenv("HOME");
    const std::string homeValue = savedHome ? savedHome : "";

    ::setenv("XDG_CONFIG_HOME", "/srv/config", 1);
    ::setenv("HOME", "/home/someone", 1);
    EXPECT_EQ(LoginItemController::defaultAutostartFolder(), "/srv/config/autostart");
    ::setenv("XDG_CONFIG_HOME", "relative", 1);
    EXPECT_EQ(LoginItemController::defaultAutostartFolder(), "/home/someone/.config/autostart");

    restore("XDG_CONFIG_HOME", savedConfig ? config.c_str() : nullptr);
    restore("HOME", savedHome ? homeValue.c_str() : nullptr);
}

} // namespace
} // namespace gaugewell
