#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace gaugewell {

// Overwrites memory that held a secret (a token, a PKCE verifier, a credential's JSON) in a way
// the compiler may not drop as a dead store, as it may drop std::fill before a destructor.
void secureWipe(std::span<std::byte> bytes);
void secureWipe(std::string& text);

} // namespace gaugewell
