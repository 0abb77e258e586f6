#include "SanitizedProviderDiagnostics.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <regex>
#include <set>
#include <unicode/brkiter.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

namespace gaugewell {

namespace {

icu::UnicodeString unicode(std::string_view text) {
    // Ill-formed UTF-8 becomes U+FFFD rather than passing through.
    return icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
}

std::string utf8(const icu::UnicodeString& text) {
    std::string result;
    text.toUTF8String(result);
    return result;
}

bool isWhiteSpaceOrNewline(UChar32 character) {
    return u_isUWhiteSpace(character) || character == 0x85 || character == 0x2028 || character == 0x2029 ||
           (character >= 0x0A && character <= 0x0D);
}

icu::UnicodeString trimmed(const icu::UnicodeString& text) {
    int32_t start = 0;
    int32_t end = text.length();
    while (start < end && isWhiteSpaceOrNewline(text.char32At(start))) {
        start = text.moveIndex32(start, 1);
    }
    while (end > start) {
        const int32_t previous = text.moveIndex32(end, -1);
        if (!isWhiteSpaceOrNewline(text.char32At(previous))) {
            break;
        }
        end = previous;
    }
    return icu::UnicodeString(text, start, end - start);
}

// User-perceived characters: a base letter with its combining marks counts once.
std::unique_ptr<icu::BreakIterator> characterBreaks(const icu::UnicodeString& text) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::BreakIterator> breaks(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    if (U_FAILURE(status) || !breaks) {
        return nullptr;
    }
    breaks->setText(text);
    return breaks;
}

icu::UnicodeString prefix(const icu::UnicodeString& text, std::size_t maximumCharacters) {
    const auto breaks = characterBreaks(text);
    if (!breaks) {
        // Without break data, count code points: never longer than the grapheme count allows.
        const int32_t end = text.moveIndex32(0, static_cast<int32_t>(maximumCharacters));
        return icu::UnicodeString(text, 0, end);
    }
    int32_t end = 0;
    for (std::size_t count = 0; count < maximumCharacters; ++count) {
        const int32_t next = breaks->next();
        if (next == icu::BreakIterator::DONE) {
            break;
        }
        end = next;
    }
    return icu::UnicodeString(text, 0, end);
}

} // namespace

SanitizedProviderDiagnostics SanitizedProviderDiagnostics::from(const ProviderViewState& provider,
                                                                ProviderConnectionStatus connectionStatus) {
    std::set<std::string> versions;
    for (const auto& window : provider.windows) {
        if (window.sourceVersion()) {
            versions.insert(*window.sourceVersion());
        }
    }
    for (const auto& bucket : provider.tokenBuckets) {
        if (bucket.sourceVersion()) {
            versions.insert(*bucket.sourceVersion());
        }
    }
    return SanitizedProviderDiagnostics{provider.descriptor.displayName(),
                                        connectionStatus,
                                        provider.availability,
                                        {versions.begin(), versions.end()},
                                        provider.diagnostics};
}

std::string SanitizedProviderDiagnostics::flattened(std::string_view text) {
    icu::UnicodeString line = unicode(text);
    line.findAndReplace(u"\r", u" ");
    line.findAndReplace(u"\n", u" ");
    return utf8(prefix(trimmed(line), maximumValueCharacters));
}

std::optional<std::string> SanitizedProviderDiagnostics::versionNumber(std::string_view versionText) {
    // Dotted numbers with an optional pre-release or build suffix, as tools print them.
    static const std::regex number(
        R"((^|[^0-9A-Za-z.])v?([0-9]+(\.[0-9]+)+([-+][0-9A-Za-z]+(\.[0-9A-Za-z]+)*)?)(?![0-9A-Za-z]))");
    std::match_results<std::string_view::const_iterator> match;
    if (!std::regex_search(versionText.begin(), versionText.end(), match, number) ||
        match[2].length() > static_cast<std::ptrdiff_t>(maximumSourceVersionCharacters)) {
        return std::nullopt;
    }
    return match[2].str();
}

std::string iso8601Text(Date date) {
    using namespace std::chrono;
    const auto seconds = floor<std::chrono::seconds>(date);
    const auto day = floor<days>(seconds);
    const year_month_day calendarDay(day);
    const hh_mm_ss time(seconds - day);
    char buffer[48];
    std::snprintf(buffer, sizeof buffer, "%04d-%02u-%02uT%02d:%02d:%02dZ",
                  static_cast<int>(calendarDay.year()), static_cast<unsigned>(calendarDay.month()),
                  static_cast<unsigned>(calendarDay.day()), static_cast<int>(time.hours().count()),
                  static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
    return buffer;
}

std::string SanitizedProviderDiagnostics::report(std::vector<SanitizedProviderDiagnostics> providers,
                                                 Date generatedAt, std::string_view appVersion,
                                                 std::string_view build, std::string_view systemVersion) {
    std::string text;
    const auto line = [&text](std::string_view content) {
        text += content;
        text += '\n';
    };
    line("Gaugewell diagnostics");
    line("Generated: " + iso8601Text(generatedAt));
    line("App: " + flattened(appVersion) + " (" + flattened(build) + ")");
    line("System: " + flattened(systemVersion));
    line("Privacy: no usage values, account identifiers, paths, payloads or credentials included");

    std::stable_sort(providers.begin(), providers.end(),
                     [](const auto& left, const auto& right) { return left.name < right.name; });
    for (auto& provider : providers) {
        line("");
        line("[" + flattened(provider.name) + "]");
        line("Connection: " + std::string(rawValue(provider.connectionStatus)));
        line("Availability: " + std::string(rawValue(provider.availability)));
        std::set<std::string> numbers;
        for (const auto& version : provider.sourceVersions) {
            if (auto number = versionNumber(version)) {
                numbers.insert(std::move(*number));
            }
        }
        std::string versions;
        for (const auto& number : numbers) {
            versions += (versions.empty() ? "" : ", ") + number;
        }
        line("Source version: " + (versions.empty() ? std::string("unavailable") : versions));
        if (provider.diagnostics.empty()) {
            line("Diagnostics: none");
            continue;
        }
        line("Diagnostics:");
        std::stable_sort(provider.diagnostics.begin(), provider.diagnostics.end(),
                         [](const auto& left, const auto& right) { return left.code() < right.code(); });
        for (const auto& diagnostic : provider.diagnostics) {
            // Codes only: a message may quote what a service or tool said.
            line("- " + std::string(rawValue(diagnostic.severity())) + ": " + flattened(diagnostic.code()));
        }
    }
    return text;
}

} // namespace gaugewell
