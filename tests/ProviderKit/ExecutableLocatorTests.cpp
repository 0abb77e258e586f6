#include "ProviderKit/Process/ExecutableLocator.h"
#include "TemporaryDirectory.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace gaugewell {
namespace {

namespace fs = std::filesystem;
using testing::TemporaryDirectory;
using testing::writeFile;
using testing::writeScript;

class ExecutableLocatorTest : public ::testing::Test {
protected:
    fs::path executable(const fs::path& relative) const {
        writeScript(home / relative, "exit 0");
        return home / relative;
    }
    fs::path plainFile(const fs::path& relative) const {
        writeFile(home / relative, "#!/bin/sh\n");
        return home / relative;
    }
    fs::path node(const std::string& version) const { return home / ".nvm/versions/node" / version; }

    TemporaryDirectory home;
    ExecutableLocator locator;
};

TEST_F(ExecutableLocatorTest, NodeVersionsComeNewestFirstAndOnlyWithAnExecutable) {
    executable(".nvm/versions/node/v9.0.0/bin/codex");
    executable(".nvm/versions/node/v22.3.0/bin/codex");
    // Upper case sorts as lower case would: a byte order would put it after every "v".
    executable(".nvm/versions/node/V10.2.0/bin/codex");
    plainFile(".nvm/versions/node/v23.0.0/bin/codex");   // not executable
    executable(".nvm/versions/node/.v99.0.0/bin/codex"); // hidden
    plainFile(".nvm/versions/node/v98.0.0");             // a file, not a version directory
    fs::create_directories(node("v97.0.0/bin/codex"));   // a directory named like the tool

    EXPECT_EQ(locator.nodeVersionManagerCandidates(home.path(), "codex"),
              (std::vector<fs::path>{node("v22.3.0/bin/codex"), node("V10.2.0/bin/codex"),
                                     node("v9.0.0/bin/codex")}));
}

TEST_F(ExecutableLocatorTest, ConfiguredComesFirstUnlessUnusableThenCandidatesThenPath) {
    const auto configured = executable("configured/codex");
    const auto candidate = executable("candidate/codex");
    const auto onPath = executable("bin/codex");
    const Environment path{{"PATH", (home / "bin").string()}};
    EXPECT_EQ(locator.locate(configured, "codex", {candidate}, path), configured);
    EXPECT_EQ(locator.locate(plainFile("plain/codex"), "codex", {home / "absent/codex", candidate}, path),
              candidate);
    EXPECT_EQ(locator.locate(std::nullopt, "codex", {}, path), onPath);
}

TEST_F(ExecutableLocatorTest, PathSkipsEmptyAndDotEntriesAndResultsAreAbsolute) {
    // An empty entry or "." would find ./codex if the current directory were searched.
    executable("cwd/codex");
    const auto onPath = executable("bin/codex");
    const auto previous = fs::current_path();
    fs::current_path(home / "cwd");
    const auto found =
        locator.locate(std::nullopt, "codex", {}, {{"PATH", "::.:" + (home / "bin").string()}});
    const auto relative = locator.locate(fs::path("../bin/./codex"), "codex", {}, {});
    fs::current_path(previous);

    EXPECT_EQ(found, onPath);
    EXPECT_EQ(relative, onPath); // absolute, so that it still names the tool in another directory
}

} // namespace
} // namespace gaugewell
