#pragma once

#include <optional>
#include <string>
#include <vector>

namespace gaugewell {

struct ServiceArguments {
    std::string service;
    bool json = false;
    bool help = false;
};

// `COMMAND <service> [--json] [--help]` in any order after the command; absent on anything else.
std::optional<ServiceArguments> parseServiceArguments(const std::vector<std::string>& arguments);

} // namespace gaugewell
