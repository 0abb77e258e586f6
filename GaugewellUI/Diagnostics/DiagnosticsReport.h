#pragma once

#include "GaugewellUI/Model/UsageAppModel.h"
#include "SanitizedProviderDiagnostics.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace gaugewell {

enum class DiagnosticsReportWriteError {
    folderMissing,    // the chosen folder does not exist (any more)
    permissionDenied, // the folder or file may not be written, or the file system is read-only
    noSpace,          // the disk or the user's quota is full
    destinationIsFolder,
    writeFailed, // anything else
};

// The one place where write failures become sentences.
std::string_view describe(DiagnosticsReportWriteError error);

// Where the report's version lines come from; the defaults read this build and this machine.
struct DiagnosticsReportEnvironment {
    std::string appVersion;
    std::string build;
    // Returns the operating system's description; called once per report.
    std::function<std::string()> systemVersion;

    static DiagnosticsReportEnvironment current();
};

// "Debian GNU/Linux 12 (bookworm) (kernel 6.1.0-18-amd64)"; either part may be missing.
std::string systemVersionText(const std::optional<std::string>& prettyName,
                              const std::optional<std::string>& kernelRelease);
// The PRETTY_NAME of an os-release file's text, unquoted; absent when missing or empty.
std::optional<std::string> osReleasePrettyName(std::string_view osRelease);
// Reads the first os-release file that exists (small files only) and the kernel release.
std::string currentSystemVersion(const std::vector<std::filesystem::path>& osReleaseFiles = {
                                     "/etc/os-release", "/usr/lib/os-release"});

// The report text for these providers with this environment's versions.
std::string diagnosticsReport(const std::vector<SanitizedProviderDiagnostics>& providers, Date generatedAt,
                              const DiagnosticsReportEnvironment& environment);

// The report of what the model holds now (no usage, no account data).
std::string
diagnosticsReport(const UsageAppModel& model,
                  const DiagnosticsReportEnvironment& environment = DiagnosticsReportEnvironment::current());

// Replaces `destination` with `text` atomically: a temporary file in the same folder, synced,
// then renamed over it. On failure nothing is left behind and an existing file is untouched.
// Blocks on the file system: call it off the main thread.
std::optional<DiagnosticsReportWriteError> writeDiagnosticsReport(const std::filesystem::path& destination,
                                                                  std::string_view text);

} // namespace gaugewell
