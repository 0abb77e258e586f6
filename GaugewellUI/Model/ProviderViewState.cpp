#include "ProviderViewState.h"

#include <algorithm>
#include <map>

namespace gaugewell {

std::vector<UsageWindowSample> ProviderViewState::currentWindows() const {
    std::map<std::string, const UsageWindowSample*> latestByBucket;
    for (const auto& window : windows) {
        auto& latest = latestByBucket[window.providerBucketID()];
        if (latest == nullptr || window.observedAt() > latest->observedAt()) {
            latest = &window; // the first of a group wins a tie
        }
    }
    std::vector<UsageWindowSample> current;
    for (const auto& [bucket, window] : latestByBucket) {
        current.push_back(*window);
    }
    std::stable_sort(current.begin(), current.end(), [](const auto& left, const auto& right) {
        if (left.windowKind() != right.windowKind()) {
            return left.windowKind() < right.windowKind();
        }
        return left.providerBucketID() < right.providerBucketID();
    });
    return current;
}

} // namespace gaugewell
