#include "Platform/FileUserDefaults.h"
#include "Platform/InMemoryUserDefaults.h"

#include <atomic>
#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <sys/stat.h>
#include <thread>

namespace gaugewell {
namespace {

namespace fs = std::filesystem;

class FileUserDefaultsTest : public ::testing::Test {
protected:
    void SetUp() override {
        directory =
            fs::temp_directory_path() / ("gaugewell-defaults-" + std::to_string(::getpid()) + "-" +
                                         ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(directory);
        file = directory / "gaugewell" / "defaults.json";
    }
    void TearDown() override { fs::remove_all(directory); }

    std::string fileText() const {
        std::ifstream stream(file);
        return std::string((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
    }

    fs::path directory;
    fs::path file;
};

TEST_F(FileUserDefaultsTest, TypesSurviveARestart) {
    {
        FileUserDefaults defaults(file);
        EXPECT_TRUE(defaults.set("menu.showCodex", false));
        EXPECT_TRUE(defaults.set("menu.providerOrder", std::string("claude,codex")));
        EXPECT_TRUE(defaults.set("advanced.refreshActiveSeconds", 300.0));
        EXPECT_TRUE(defaults.set("menu.looksBoolean", std::string("true")));
    }
    const FileUserDefaults restarted(file);
    EXPECT_EQ(restarted.storedBool("menu.showCodex"), false);
    EXPECT_EQ(restarted.stringValue("menu.providerOrder"), "claude,codex");
    EXPECT_EQ(restarted.doubleValue("advanced.refreshActiveSeconds"), 300.0);
    // A string is not a stored Boolean, though the lenient accessor reads it as true.
    EXPECT_FALSE(restarted.storedBool("menu.looksBoolean").has_value());
    EXPECT_TRUE(restarted.boolValue("menu.looksBoolean"));
    EXPECT_FALSE(restarted.object("missing").has_value());
}

TEST_F(FileUserDefaultsTest, FileIsPrivateAndReplacedWhole) {
    FileUserDefaults defaults(file);
    defaults.set("a", 1.0);
    defaults.set("b", true);
    defaults.remove("a");
    struct stat info {};
    ASSERT_EQ(::stat(file.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
    EXPECT_EQ(fileText(), "{\"b\":true}\n");
    std::set<std::string> names; // nothing left over from the replacements
    for (const auto& entry : fs::directory_iterator(file.parent_path())) {
        names.insert(entry.path().filename().string());
    }
    EXPECT_EQ(names, (std::set<std::string>{"defaults.json", "defaults.json.lock"}));
}

TEST_F(FileUserDefaultsTest, ConcurrentWritersLoseNothing) {
    FileUserDefaults first(file);
    FileUserDefaults second(file); // a second process's view of the same file
    std::thread a([&] {
        for (int i = 0; i < 50; ++i) {
            first.set("first." + std::to_string(i), static_cast<double>(i));
        }
    });
    std::thread b([&] {
        for (int i = 0; i < 50; ++i) {
            second.set("second." + std::to_string(i), static_cast<double>(i));
        }
    });
    a.join();
    b.join();
    const FileUserDefaults reader(file);
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(reader.doubleValue("first." + std::to_string(i)), i);
        EXPECT_EQ(reader.doubleValue("second." + std::to_string(i)), i);
    }
}

TEST_F(FileUserDefaultsTest, ChangesFromAnotherWriterAreSeen) {
    FileUserDefaults app(file);
    FileUserDefaults commandLine(file);
    EXPECT_FALSE(app.storedBool("connections.oauth-authorized.v2.codex").has_value());
    std::atomic<int> heard{0};
    const auto subscription = app.observe([&](const std::string& key) { heard += key.empty() ? 1 : 0; });
    commandLine.set("connections.oauth-authorized.v2.codex", true);
    EXPECT_TRUE(app.reloadIfChanged());
    EXPECT_EQ(heard, 1);
    EXPECT_EQ(app.storedBool("connections.oauth-authorized.v2.codex"), true);
    EXPECT_FALSE(app.reloadIfChanged());
}

TEST_F(FileUserDefaultsTest, CorruptFileIsKeptAsideAndDefaultsApply) {
    fs::create_directories(file.parent_path());
    std::ofstream(file) << "{\"menu.showCodex\": fal";
    FileUserDefaults defaults(file);
    EXPECT_FALSE(defaults.object("menu.showCodex").has_value());
    const auto aside = defaults.setAsidePath();
    ASSERT_TRUE(aside.has_value());
    std::ifstream kept(*aside);
    std::string text((std::istreambuf_iterator<char>(kept)), std::istreambuf_iterator<char>());
    EXPECT_EQ(text, "{\"menu.showCodex\": fal");
    EXPECT_TRUE(defaults.set("menu.showCodex", true));
    EXPECT_TRUE(fs::exists(*aside));
}

TEST_F(FileUserDefaultsTest, NonObjectFileIsAlsoSetAside) {
    fs::create_directories(file.parent_path());
    std::ofstream(file) << "[1,2,3]";
    FileUserDefaults defaults(file);
    EXPECT_FALSE(defaults.object("x").has_value());
    EXPECT_TRUE(defaults.setAsidePath().has_value());
}

TEST(UserDefaults, ObserversHearChangesUntilUnsubscribed) {
    InMemoryUserDefaults defaults;
    std::vector<std::string> keys;
    {
        const auto subscription = defaults.observe([&](const std::string& key) { keys.push_back(key); });
        defaults.set("menu.iconsOnly", true);
        defaults.remove("menu.iconsOnly");
    }
    defaults.set("menu.iconsOnly", false);
    EXPECT_EQ(keys, (std::vector<std::string>{"menu.iconsOnly", "menu.iconsOnly"}));
}

TEST(UserDefaults, LenientAccessorsFollowThePlatformRules) {
    InMemoryUserDefaults defaults;
    defaults.set("n", 2.5);
    defaults.set("s", std::string("30"));
    defaults.set("t", std::string("YES"));
    defaults.set("z", 0.0);
    EXPECT_EQ(defaults.doubleValue("n"), 2.5);
    EXPECT_EQ(defaults.doubleValue("s"), 30.0);
    EXPECT_EQ(defaults.doubleValue("t"), 0.0);
    EXPECT_EQ(defaults.doubleValue("missing"), 0.0);
    EXPECT_TRUE(defaults.boolValue("n"));
    EXPECT_TRUE(defaults.boolValue("t"));
    EXPECT_FALSE(defaults.boolValue("z"));
    EXPECT_FALSE(defaults.boolValue("missing"));
    EXPECT_EQ(defaults.stringValue("n"), "2.5");
    EXPECT_FALSE(defaults.stringValue("missing").has_value());
}

} // namespace
} // namespace gaugewell
