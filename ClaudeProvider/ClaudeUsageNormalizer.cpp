#include "ClaudeUsageNormalizer.h"

#include "ClaudeProvider/InternetDateTime.h"
#include "ClaudeUsageDiagnostics.h"
#include "ClaudeUtilization.h"
#include "UsageDomain/Translatable.h"

namespace gaugewell {

namespace {

struct WindowRow {
    std::optional<ClaudeUtilizationWindow> ClaudeUtilization::*window;
    std::string_view key;
    std::string_view name;
    UsageWindowKind kind;
    std::optional<std::string_view> modelID;
    std::int64_t durationSeconds;
};

constexpr std::int64_t fiveHours = 18'000;
constexpr std::int64_t sevenDays = 604'800;

const WindowRow windowTable[] = {
    {&ClaudeUtilization::fiveHour, "five_hour", QT_TRANSLATE_NOOP("Localizable", "Five-hour"),
     UsageWindowKind::fiveHour, std::nullopt, fiveHours},
    {&ClaudeUtilization::sevenDay, "seven_day", QT_TRANSLATE_NOOP("Localizable", "Seven-day"),
     UsageWindowKind::sevenDay, std::nullopt, sevenDays},
    {&ClaudeUtilization::sevenDayOAuthApps, "seven_day_oauth_apps",
     QT_TRANSLATE_NOOP("Localizable", "OAuth apps weekly"), UsageWindowKind::modelSpecific, "oauth-apps",
     sevenDays},
    {&ClaudeUtilization::sevenDayOpus, "seven_day_opus", QT_TRANSLATE_NOOP("Localizable", "Opus weekly"),
     UsageWindowKind::modelSpecific, "opus", sevenDays},
    {&ClaudeUtilization::sevenDaySonnet, "seven_day_sonnet",
     QT_TRANSLATE_NOOP("Localizable", "Sonnet weekly"), UsageWindowKind::modelSpecific, "sonnet", sevenDays},
    {&ClaudeUtilization::sevenDayCowork, "seven_day_cowork",
     QT_TRANSLATE_NOOP("Localizable", "Cowork weekly"), UsageWindowKind::modelSpecific, "cowork", sevenDays},
};

std::string sampleID(const Uuid& connectionID, std::string_view key, Date observedAt) {
    // duration_cast truncates toward zero, as the identifier wants.
    const auto seconds =
        std::chrono::duration_cast<std::chrono::seconds>(observedAt.time_since_epoch()).count();
    return connectionID.text() + ":" + std::string(key) + ":" + std::to_string(seconds);
}

} // namespace

Expected<ProviderCollectionResult, DecodeError>
ClaudeUsageNormalizer::normalize(std::string_view body, const Uuid& connectionID, Date observedAt) const {
    auto decoded = decodeJson<ClaudeUtilization>(body);
    if (!decoded) {
        return unexpected(decoded.error());
    }
    const ClaudeUtilization& usage = *decoded;
    static const Decimal lowest(0);
    static const Decimal highest(100);

    std::vector<UsageWindowSample> windows;
    std::vector<ProviderDiagnostic> diagnostics;
    for (const WindowRow& row : windowTable) {
        const auto& window = usage.*(row.window);
        if (!window) {
            continue;
        }
        if (!window->utilization || *window->utilization < lowest || *window->utilization > highest) {
            diagnostics.push_back(claudeDiagnostic(ClaudeUsageIssue::invalidUtilization));
            continue;
        }
        std::optional<Date> resetAt;
        if (window->resetsAt) {
            resetAt = parseInternetDateTime(*window->resetsAt);
            if (!resetAt) {
                diagnostics.push_back(claudeDiagnostic(ClaudeUsageIssue::invalidReset));
            }
        }
        windows.emplace_back(sampleID(connectionID, row.key, observedAt), connectionID, std::string(row.key),
                             std::string(row.name), row.kind,
                             row.modelID ? std::optional<std::string>(*row.modelID) : std::nullopt,
                             observedAt, observedAt, row.durationSeconds, std::nullopt, std::nullopt, resetAt,
                             window->utilization->dividedBy100(), std::nullopt, std::nullopt, std::nullopt,
                             std::nullopt, MeasurementAuthority::vendorAuthoritative,
                             MeasurementConfidence::exact, MeasurementCoverage::account,
                             MeasurementFreshness::live, claudeAccountUsageSource(), std::nullopt);
    }
    if (windows.empty()) {
        diagnostics.push_back(claudeDiagnostic(ClaudeUsageIssue::noUsageWindows));
    }
    return ProviderCollectionResult(claudeProviderDescriptor(), observedAt, std::move(windows), {},
                                    std::move(diagnostics));
}

} // namespace gaugewell
