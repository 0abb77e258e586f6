#pragma once

#include "RawSocketServer.h"

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace gaugewell::testing {

// For its lifetime every proxy variable libcurl reads names a local listener that counts the
// connections it gets and hangs up on them; no_proxy is cleared so that nothing is exempted.
class EnvironmentProxy {
public:
    EnvironmentProxy() {
        for (const char* name :
             {"http_proxy", "https_proxy", "HTTPS_PROXY", "ALL_PROXY", "no_proxy", "NO_PROXY"}) {
            const char* earlier = std::getenv(name);
            saved.emplace_back(name, earlier ? std::optional<std::string>(earlier) : std::nullopt);
            if (name[0] == 'n' || name[0] == 'N') {
                ::unsetenv(name);
            } else {
                ::setenv(name, listener.baseURL().c_str(), 1);
            }
        }
    }
    ~EnvironmentProxy() {
        for (const auto& [name, value] : saved) {
            value ? ::setenv(name.c_str(), value->c_str(), 1) : ::unsetenv(name.c_str());
        }
    }

    int connectionCount() const { return listener.connectionCount(); }

private:
    RawSocketServer listener{""};
    std::vector<std::pair<std::string, std::optional<std::string>>> saved;
};

} // namespace gaugewell::testing
