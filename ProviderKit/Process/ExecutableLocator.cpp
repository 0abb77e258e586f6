#include "ProviderKit/Process/ExecutableLocator.h"

#include <algorithm>
#include <memory>
#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unistd.h>

namespace gaugewell {

namespace {

namespace fs = std::filesystem;

fs::path standardized(const fs::path& path) {
    std::error_code error;
    auto absolute = fs::absolute(path, error);
    return (error ? path : absolute).lexically_normal();
}

// Version directories in the order a file manager shows them (v9 before v20), case ignored.
// The root collation, not the default locale's: under LANG=C that is en_US_POSIX, whose
// tailoring makes case a primary difference.
std::unique_ptr<icu::Collator> versionCollator() {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Collator> collator(icu::Collator::createInstance(icu::Locale::getRoot(), status));
    if (U_FAILURE(status) || !collator) {
        return nullptr;
    }
    collator->setStrength(icu::Collator::SECONDARY);
    collator->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
    if (U_FAILURE(status)) {
        return nullptr;
    }
    return collator;
}

} // namespace

bool ExecutableLocator::isUsable(const fs::path& path) {
    if (path.empty()) {
        return false;
    }
    std::error_code error;
    return fs::is_regular_file(path, error) && ::access(path.c_str(), X_OK) == 0;
}

std::vector<fs::path>
ExecutableLocator::nodeVersionManagerCandidates(const fs::path& homeDirectory,
                                                const std::string& executableName) const {
    const auto root = homeDirectory / ".nvm" / "versions" / "node";
    std::vector<fs::path> versions;
    std::error_code error;
    fs::directory_iterator entries(root, error);
    if (error) {
        return {};
    }
    for (const fs::directory_iterator end; entries != end; entries.increment(error)) {
        if (error) {
            return {};
        }
        const auto name = entries->path().filename().string();
        std::error_code attributeError;
        if (name.empty() || name.front() == '.' || !entries->is_directory(attributeError) || attributeError) {
            continue;
        }
        versions.push_back(entries->path());
    }

    const auto collator = versionCollator();
    std::stable_sort(versions.begin(), versions.end(), [&](const fs::path& left, const fs::path& right) {
        const auto leftName = left.filename().string();
        const auto rightName = right.filename().string();
        if (!collator) {
            return leftName > rightName;
        }
        UErrorCode status = U_ZERO_ERROR;
        const auto order = collator->compareUTF8(leftName, rightName, status);
        // Names the collator cannot tell apart ("V20" and "v20") still get one fixed order.
        return order == UCOL_EQUAL ? leftName > rightName : order == UCOL_GREATER;
    });

    std::vector<fs::path> candidates;
    for (const auto& version : versions) {
        auto candidate = version / "bin" / executableName;
        if (isUsable(candidate)) {
            candidates.push_back(standardized(candidate));
        }
    }
    return candidates;
}

std::optional<fs::path> ExecutableLocator::locate(const std::optional<fs::path>& configured,
                                                  const std::string& executableName,
                                                  const std::vector<fs::path>& commonCandidates,
                                                  const Environment& environment) const {
    if (configured && isUsable(*configured)) {
        return standardized(*configured);
    }
    for (const auto& candidate : commonCandidates) {
        if (isUsable(candidate)) {
            return standardized(candidate);
        }
    }
    const auto entry = environment.find("PATH");
    const std::string searchPath = entry == environment.end() ? std::string() : entry->second;
    std::size_t start = 0;
    while (start <= searchPath.size()) {
        const auto colon = std::min(searchPath.find(':', start), searchPath.size());
        const auto piece = searchPath.substr(start, colon - start);
        start = colon + 1;
        if (piece.empty() || piece == ".") {
            continue;
        }
        auto candidate = fs::path(piece) / executableName;
        if (isUsable(candidate)) {
            return standardized(candidate);
        }
    }
    return std::nullopt;
}

} // namespace gaugewell
