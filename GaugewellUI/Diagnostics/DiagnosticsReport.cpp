#include "DiagnosticsReport.h"

#include "Platform/AtomicFile.h"
#include "Platform/SafeFileReader.h"
#include "UsageDomain/Uuid.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

#ifndef GAUGEWELL_VERSION
#define GAUGEWELL_VERSION "development"
#endif

namespace gaugewell {

namespace {

constexpr std::int64_t maximumOsReleaseBytes = 64 * 1024;

DiagnosticsReportWriteError writeError(int error) {
    switch (error) {
    case ENOENT:
    case ENOTDIR:
        return DiagnosticsReportWriteError::folderMissing;
    case EACCES:
    case EPERM:
    case EROFS:
        return DiagnosticsReportWriteError::permissionDenied;
    case ENOSPC:
    case EDQUOT:
        return DiagnosticsReportWriteError::noSpace;
    case EISDIR:
        return DiagnosticsReportWriteError::destinationIsFolder;
    default:
        return DiagnosticsReportWriteError::writeFailed;
    }
}

std::optional<std::string> kernelRelease() {
    utsname names{};
    if (::uname(&names) != 0 || names.release[0] == '\0') {
        return std::nullopt;
    }
    return std::string(names.release);
}

// os-release values follow shell quoting: double quotes with backslash escapes, or single quotes.
std::string unquoted(std::string_view value) {
    if (value.size() >= 2 && value.front() == '\'' && value.back() == '\'') {
        return std::string(value.substr(1, value.size() - 2));
    }
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
        std::string result;
        const auto inner = value.substr(1, value.size() - 2);
        for (std::size_t index = 0; index < inner.size(); ++index) {
            if (inner[index] == '\\' && index + 1 < inner.size()) {
                ++index;
            }
            result += inner[index];
        }
        return result;
    }
    return std::string(value);
}

} // namespace

std::string_view describe(DiagnosticsReportWriteError error) {
    switch (error) {
    case DiagnosticsReportWriteError::folderMissing:
        return "The folder for the diagnostics report does not exist.";
    case DiagnosticsReportWriteError::permissionDenied:
        return "The diagnostics report may not be written there.";
    case DiagnosticsReportWriteError::noSpace:
        return "There is not enough space to write the diagnostics report.";
    case DiagnosticsReportWriteError::destinationIsFolder:
        return "A folder of that name is in the way of the diagnostics report.";
    case DiagnosticsReportWriteError::writeFailed:
        break;
    }
    return "The diagnostics report could not be written.";
}

DiagnosticsReportEnvironment DiagnosticsReportEnvironment::current() {
#ifdef GAUGEWELL_BUILD
    std::string build = GAUGEWELL_BUILD;
#else
    std::string build = "development";
#endif
    return DiagnosticsReportEnvironment{GAUGEWELL_VERSION, std::move(build),
                                        [] { return currentSystemVersion(); }};
}

std::string systemVersionText(const std::optional<std::string>& prettyName,
                              const std::optional<std::string>& kernelRelease) {
    std::string text = prettyName.value_or("Linux");
    if (kernelRelease) {
        text += " (kernel " + *kernelRelease + ")";
    }
    return text;
}

std::optional<std::string> osReleasePrettyName(std::string_view osRelease) {
    constexpr std::string_view key = "PRETTY_NAME=";
    std::optional<std::string> prettyName;
    while (!osRelease.empty()) {
        const auto end = osRelease.find('\n');
        std::string_view line = osRelease.substr(0, end);
        osRelease = end == std::string_view::npos ? std::string_view() : osRelease.substr(end + 1);
        while (!line.empty() && (line.back() == '\r' || line.back() == ' ' || line.back() == '\t')) {
            line.remove_suffix(1);
        }
        if (line.starts_with(key)) {
            prettyName = unquoted(line.substr(key.size())); // the last assignment wins, as in a shell
        }
    }
    if (!prettyName || prettyName->empty()) {
        return std::nullopt;
    }
    return prettyName;
}

std::string currentSystemVersion(const std::vector<std::filesystem::path>& osReleaseFiles) {
    std::optional<std::string> prettyName;
    for (const auto& file : osReleaseFiles) {
        const auto text = SafeFileReader().read(file, maximumOsReleaseBytes, std::chrono::nanoseconds(0));
        if (text) {
            prettyName = osReleasePrettyName(*text);
            break;
        }
        if (text.error() != SafeFileReaderError::missing) {
            break; // the file is there but unusable: do not describe the system by another one
        }
    }
    return systemVersionText(prettyName, kernelRelease());
}

std::string diagnosticsReport(const UsageAppModel& model, const DiagnosticsReportEnvironment& environment) {
    std::vector<SanitizedProviderDiagnostics> sanitized;
    for (const auto& provider : model.providers()) {
        sanitized.push_back(
            SanitizedProviderDiagnostics::from(provider, model.connectionState(provider.service).status));
    }
    return diagnosticsReport(sanitized, model.now(), environment);
}

std::string diagnosticsReport(const std::vector<SanitizedProviderDiagnostics>& providers, Date generatedAt,
                              const DiagnosticsReportEnvironment& environment) {
    const std::string system = environment.systemVersion ? environment.systemVersion() : std::string();
    return SanitizedProviderDiagnostics::report(providers, generatedAt, environment.appVersion,
                                                environment.build, system);
}

std::optional<DiagnosticsReportWriteError> writeDiagnosticsReport(const std::filesystem::path& destination,
                                                                  std::string_view text) {
    if (destination.filename().empty()) {
        return DiagnosticsReportWriteError::destinationIsFolder;
    }
    // 0666 less the umask: the report is the user's document, not a secret.
    const mode_t umask = ::umask(0);
    ::umask(umask);
    if (const auto written = replaceFileAtomically(destination, text, 0666 & ~umask); !written) {
        return writeError(static_cast<int>(written.error()));
    }
    return std::nullopt;
}

} // namespace gaugewell
