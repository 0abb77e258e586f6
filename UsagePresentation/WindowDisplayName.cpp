#include "WindowDisplayName.h"

namespace gaugewell {

std::string_view windowKindDisplayName(UsageWindowKind kind) {
    switch (kind) {
    case UsageWindowKind::fiveHour:
        return "Five-hour";
    case UsageWindowKind::sevenDay:
        return "Weekly";
    case UsageWindowKind::modelSpecific:
        return "Model";
    case UsageWindowKind::custom:
    case UsageWindowKind::unknown:
        break;
    }
    return "Usage";
}

std::string windowDisplayName(const UsageWindowSample& window) {
    if (window.providerBucketName()) {
        return *window.providerBucketName();
    }
    return std::string(windowKindDisplayName(window.windowKind()));
}

} // namespace gaugewell
