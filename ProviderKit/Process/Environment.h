#pragma once

#include <map>
#include <string>

namespace gaugewell {

// A process environment as name -> value.
using Environment = std::map<std::string, std::string>;

// Our own process environment, read once per call from `environ`.
Environment currentProcessEnvironment();

} // namespace gaugewell
