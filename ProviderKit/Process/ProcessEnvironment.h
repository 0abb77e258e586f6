#pragma once

#include "ProviderKit/Process/Environment.h"

#include <array>
#include <string_view>

namespace gaugewell {

// Decides which of our variables a child may see. Tokens, proxies, library preload paths and
// the like stay with us: a child gets a home, a search path, a temporary folder and a locale.
class ProcessEnvironment {
public:
    static constexpr std::array<std::string_view, 6> allowedKeys = {"HOME", "PATH",   "TMPDIR",
                                                                    "LANG", "LC_ALL", "LC_CTYPE"};
    static constexpr std::string_view defaultSearchPath = "/opt/homebrew/bin:/usr/local/bin:/usr/bin:/bin";

    // The allowed entries of `from` (exact, case-sensitive keys), plus the default search path
    // when there is no "PATH". A "PATH" that is present is kept as it is, even when empty.
    static Environment providerEnvironment(const Environment& from);
};

} // namespace gaugewell
