#include "Platform/FileUserDefaults.h"
#include "Platform/InMemoryUserDefaults.h"
#include "TemporaryDirectory.h"

#include <atomic>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>

namespace gaugewell {
namespace {

namespace fs = std::filesystem;

std::string fileText(const fs::path& path) {
    std::ifstream stream(path);
    return std::string((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
}

class FileUserDefaultsTest : public ::testing::Test {
protected:
    testing::TemporaryDirectory directory;
    const fs::path file = directory / "gaugewell" / "defaults.json";
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
    EXPECT_EQ(restarted.storedBool("menu.looksBoolean"), std::nullopt);
    EXPECT_TRUE(restarted.boolValue("menu.looksBoolean"));
}

TEST_F(FileUserDefaultsTest, FileIsPrivateAndReplacedWhole) {
    FileUserDefaults defaults(file);
    defaults.set("a", 1.0);
    defaults.set("b", true);
    defaults.remove("a");
    struct stat info {};
    ASSERT_EQ(::stat(file.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
    EXPECT_EQ(fileText(file), "{\"b\":true}\n");
    std::vector<std::string> names; // nothing left over from the replacements
    for (const auto& entry : fs::directory_iterator(file.parent_path())) {
        names.push_back(entry.path().filename().string());
    }
    EXPECT_THAT(names, ::testing::UnorderedElementsAre("defaults.json", "defaults.json.lock"));
}

TEST_F(FileUserDefaultsTest, ConcurrentWritersLoseNothing) {
    FileUserDefaults first(file);
    FileUserDefaults second(file); // a second process's view of the same file
    const auto writeFifty = [](FileUserDefaults& defaults, const std::string& prefix) {
        for (int i = 0; i < 50; ++i) {
            defaults.set(prefix + std::to_string(i), static_cast<double>(i));
        }
    };
    std::thread a(writeFifty, std::ref(first), "first.");
    std::thread b(writeFifty, std::ref(second), "second.");
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
    EXPECT_EQ(app.storedBool("connections.oauth-authorized.v2.codex"), std::nullopt);
    std::atomic<int> heard{0};
    const auto subscription = app.observe([&](const std::string& key) { heard += key.empty() ? 1 : 0; });
    commandLine.set("connections.oauth-authorized.v2.codex", true);
    EXPECT_TRUE(app.reloadIfChanged());
    EXPECT_EQ(heard, 1);
    EXPECT_EQ(app.storedBool("connections.oauth-authorized.v2.codex"), true);
    EXPECT_FALSE(app.reloadIfChanged());
}

TEST_F(FileUserDefaultsTest, UnusableFileIsKeptAsideAndDefaultsApply) {
    for (const std::string contents : {"{\"menu.showCodex\": fal", "[1,2,3]"}) {
        testing::writeFile(file, contents);
        FileUserDefaults defaults(file);
        EXPECT_EQ(defaults.object("menu.showCodex"), std::nullopt) << contents;
        const auto aside = defaults.setAsidePath();
        ASSERT_TRUE(aside) << contents;
        EXPECT_EQ(fileText(*aside), contents);
        EXPECT_TRUE(defaults.set("menu.showCodex", true));
        EXPECT_TRUE(fs::exists(*aside));
        fs::remove(*aside);
    }
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
    EXPECT_THAT(keys, ::testing::ElementsAre("menu.iconsOnly", "menu.iconsOnly"));
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
    EXPECT_TRUE(defaults.boolValue("n") && defaults.boolValue("t"));
    EXPECT_FALSE(defaults.boolValue("z") || defaults.boolValue("missing"));
    EXPECT_EQ(defaults.stringValue("n"), "2.5");
    EXPECT_EQ(defaults.stringValue("missing"), std::nullopt);
}

} // namespace
} // namespace gaugewell
