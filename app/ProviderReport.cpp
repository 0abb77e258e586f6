#include "ProviderReport.h"

#include "UsageDomain/RecordCoding.h"
#include "UsagePresentation/UsagePercentage.h"

#include <ctime>
#include <sstream>

namespace gaugewell {

namespace {

std::string padded(std::string text, std::size_t width) {
    // Width in code points, so that names with non-ASCII letters still line up.
    std::size_t length = 0;
    for (const unsigned char c : text) {
        length += (c & 0xC0) != 0x80;
    }
    if (length < width) {
        text.append(width - length, ' ');
    }
    return text;
}

std::string localTimeText(Date moment) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(moment);
    std::tm local{};
    if (localtime_r(&seconds, &local) == nullptr) {
        return "?";
    }
    char buffer[32];
    std::strftime(buffer, sizeof buffer, "%Y-%m-%d %H:%M", &local);
    return buffer;
}

std::string utcDayText(Date moment) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(moment);
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    char buffer[16];
    std::strftime(buffer, sizeof buffer, "%Y-%m-%d", &utc);
    return buffer;
}

std::string capabilityNames(ProviderCapabilities capabilities) {
    static const std::pair<ProviderCapabilities, const char*> names[] = {
        {ProviderCapabilities::currentWindows, "currentWindows"},
        {ProviderCapabilities::resetTimes, "resetTimes"},
        {ProviderCapabilities::accountTokenHistory, "accountTokenHistory"},
        {ProviderCapabilities::deviceTokenHistory, "deviceTokenHistory"},
        {ProviderCapabilities::modelBreakdown, "modelBreakdown"},
        {ProviderCapabilities::credits, "credits"},
        {ProviderCapabilities::spend, "spend"},
        {ProviderCapabilities::apiBilling, "apiBilling"},
    };
    std::string text;
    for (const auto& [flag, name] : names) {
        if (capabilities.contains(flag)) {
            text += (text.empty() ? "" : ", ") + std::string(name);
        }
    }
    return text.empty() ? "none" : text;
}

void appendDiagnostics(std::ostringstream& out, const std::vector<ProviderDiagnostic>& diagnostics) {
    for (const auto& diagnostic : diagnostics) {
        out << rawValue(diagnostic.severity()) << ' ' << diagnostic.code() << ": " << diagnostic.message()
            << '\n';
    }
}

} // namespace

JsonValue ProviderReport::probeJson(const ProviderProbeResult& result) {
    return encodeJson(result);
}

JsonValue ProviderReport::collectionJson(const ProviderCollectionResult& result) {
    return KeyedEncoder()
        .encode("provider", result.provider())
        .encode("collectedAt", result.collectedAt())
        .encode("windows", result.windows())
        .encode("tokenBuckets", result.tokenBuckets())
        .encode("diagnostics", result.diagnostics())
        .result();
}

std::string ProviderReport::probeText(const ProviderProbeResult& result) {
    std::ostringstream out;
    out << result.provider().displayName() << ": " << rawValue(result.availability()) << '\n';
    out << "  version: " << result.sourceVersion().value_or("unknown") << '\n';
    out << "  capabilities: " << capabilityNames(result.capabilities()) << '\n';
    if (result.provider().integrationNotice()) {
        out << "  " << *result.provider().integrationNotice() << '\n';
    }
    appendDiagnostics(out, result.diagnostics());
    return out.str();
}

std::string ProviderReport::usedPercentText(const UsageWindowSample& window) {
    std::optional<std::int64_t> percentage;
    if (window.usedFraction()) {
        percentage = displayedPercentage(*window.usedFraction(), PercentageDisplayMode::consumed);
    } else if (window.remainingFraction()) {
        // What remains of the remaining fraction is the used one.
        percentage = displayedPercentage(*window.remainingFraction(), PercentageDisplayMode::remaining);
    }
    return percentage ? percentageText(*percentage) : "-";
}

std::string ProviderReport::relativeText(Date moment, Date now) {
    auto seconds = std::chrono::duration_cast<std::chrono::seconds>(moment - now).count();
    if (seconds <= 0) {
        return "now";
    }
    const auto days = seconds / 86400;
    const auto hours = seconds % 86400 / 3600;
    const auto minutes = seconds % 3600 / 60;
    if (days > 0) {
        return "in " + std::to_string(days) + "d " + std::to_string(hours) + "h";
    }
    if (hours > 0) {
        return "in " + std::to_string(hours) + "h " + std::to_string(minutes) + "m";
    }
    if (minutes > 0) {
        return "in " + std::to_string(minutes) + "m";
    }
    return "in " + std::to_string(seconds) + "s";
}

std::string ProviderReport::collectionText(const ProviderCollectionResult& result, Date now) {
    std::ostringstream out;
    out << result.provider().displayName() << '\n';
    if (!result.windows().empty()) {
        std::size_t nameWidth = 6;
        std::vector<std::string> names;
        for (const auto& window : result.windows()) {
            names.push_back(window.providerBucketName().value_or(window.providerBucketID()));
            nameWidth = std::max(nameWidth, names.back().size());
        }
        out << "  " << padded("WINDOW", nameWidth) << "  USED  " << padded("RESETS", 34) << "SOURCE\n";
        for (std::size_t index = 0; index < result.windows().size(); ++index) {
            const auto& window = result.windows()[index];
            std::string resets = "-";
            if (window.resetAt()) {
                resets = localTimeText(*window.resetAt()) + " (" + relativeText(*window.resetAt(), now) + ")";
            }
            std::string used = usedPercentText(window);
            out << "  " << padded(names[index], nameWidth) << "  "
                << std::string(used.size() < 4 ? 4 - used.size() : 0, ' ') << used << "  "
                << padded(resets, 34) << window.source().displayName() << '\n';
        }
    } else {
        out << "  no usage windows\n";
    }
    for (const auto& bucket : result.tokenBuckets()) {
        out << "  tokens " << utcDayText(bucket.intervalStart()) << ": "
            << (bucket.totalTokens() ? std::to_string(*bucket.totalTokens()) : std::string("-")) << '\n';
    }
    appendDiagnostics(out, result.diagnostics());
    return out.str();
}

} // namespace gaugewell
