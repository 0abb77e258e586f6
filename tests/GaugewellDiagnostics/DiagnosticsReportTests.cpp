#include "GaugewellUI/Diagnostics/DiagnosticsReport.h"

#include <QTemporaryDir>
#include <fstream>
#include <gtest/gtest.h>

namespace gaugewell {
namespace {

std::string contents(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::vector<std::string> entries(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

TEST(DiagnosticsReport, OsReleasePrettyNameIsReadLikeTheShellWould) {
    const std::pair<std::string, std::optional<std::string>> cases[] = {
        {"PRETTY_NAME='Fedora Linux 40'\n", "Fedora Linux 40"},
        {"PRETTY_NAME=Arch\r\n", "Arch"},
        {"PRETTY_NAME=\"A \\\"quoted\\\" \\\\ name\"", "A \"quoted\" \\ name"},
        {"PRETTY_NAME=Old\nPRETTY_NAME=New\n", "New"},
        {"#PRETTY_NAME=Commented\nXPRETTY_NAME=Other\n", std::nullopt}, // the key must start the line
        {"PRETTY_NAME=\"\"\n", std::nullopt},
    };
    for (const auto& [text, prettyName] : cases) {
        EXPECT_EQ(osReleasePrettyName(text), prettyName) << ::testing::PrintToString(text);
    }
}

TEST(DiagnosticsReport, SystemVersionNamesTheFirstOsReleaseThatExistsAndTheKernel) {
    QTemporaryDir folder;
    const std::filesystem::path root = folder.path().toStdString();
    std::ofstream(root / "os-release") << "PRETTY_NAME=\"Test OS 1\"\n";
    const auto version = currentSystemVersion({root / "missing", root / "os-release"});
    EXPECT_TRUE(version.starts_with("Test OS 1 (kernel ")) << version;

    const auto fallback = currentSystemVersion({root / "missing"});
    EXPECT_TRUE(fallback.starts_with("Linux (kernel ")) << fallback;
    EXPECT_EQ(systemVersionText("Debian", std::nullopt), "Debian");
}

TEST(DiagnosticsReport, EnvironmentSuppliesTheVersionLines) {
    const auto current = DiagnosticsReportEnvironment::current();
    EXPECT_FALSE(current.appVersion.empty());
    EXPECT_FALSE(current.build.empty());
    const DiagnosticsReportEnvironment environment{"1.4", "212", [] { return std::string("Test OS\n"); }};
    const auto text = diagnosticsReport({}, dateFromUnixSeconds(0), environment);
    EXPECT_NE(text.find("\nApp: 1.4 (212)\nSystem: Test OS\n"), std::string::npos) << text;
}

TEST(DiagnosticsReport, WritingReplacesTheFileAndLeavesNothingElse) {
    QTemporaryDir folder;
    const std::filesystem::path root = folder.path().toStdString();
    const auto destination = root / "Gaugewell-Diagnostics.txt";
    std::ofstream(destination) << "an older and much longer report\n";
    EXPECT_EQ(writeDiagnosticsReport(destination, "Gaugewell diagnostics\n\u00e9\n"), std::nullopt);
    EXPECT_EQ(contents(destination), "Gaugewell diagnostics\n\u00e9\n");
    EXPECT_EQ(entries(root), std::vector<std::string>{"Gaugewell-Diagnostics.txt"});
}

TEST(DiagnosticsReport, AFailedWriteReportsTheCauseAndLeavesTheFolderAsItWas) {
    const std::pair<std::string, DiagnosticsReportWriteError> cases[] = {
        {"gone/report.txt", DiagnosticsReportWriteError::folderMissing},
        {"a-folder", DiagnosticsReportWriteError::destinationIsFolder},
        {"a-folder/", DiagnosticsReportWriteError::destinationIsFolder}, // no file name
    };
    for (const auto& [destination, error] : cases) {
        SCOPED_TRACE(destination);
        QTemporaryDir folder;
        const std::filesystem::path root = folder.path().toStdString();
        std::filesystem::create_directory(root / "a-folder");
        std::ofstream(root / "a-file") << "kept\n";
        const auto before = entries(root);
        EXPECT_EQ(writeDiagnosticsReport(root / destination, "text\n"), error);
        EXPECT_EQ(entries(root), before);
        EXPECT_TRUE(std::filesystem::is_empty(root / "a-folder"));
        EXPECT_EQ(contents(root / "a-file"), "kept\n");
        EXPECT_FALSE(describe(error).empty());
    }
}

} // namespace
} // namespace gaugewell
