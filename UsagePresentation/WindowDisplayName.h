#pragma once

#include "UsageDomain/UsageWindowSample.h"

#include <string>
#include <string_view>

namespace gaugewell {

// "Five-hour", "Weekly", "Model"; "Usage" for custom and unknown windows.
std::string_view windowKindDisplayName(UsageWindowKind kind);

// The provider's own name for the window when it gave one, otherwise the kind's name.
std::string windowDisplayName(const UsageWindowSample& window);

} // namespace gaugewell
