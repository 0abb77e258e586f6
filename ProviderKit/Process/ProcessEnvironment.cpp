#include "ProviderKit/Process/ProcessEnvironment.h"

namespace gaugewell {

Environment ProcessEnvironment::providerEnvironment(const Environment& from) {
    Environment environment;
    for (const auto key : allowedKeys) {
        if (const auto entry = from.find(std::string(key)); entry != from.end()) {
            environment.emplace(entry->first, entry->second);
        }
    }
    environment.try_emplace("PATH", defaultSearchPath);
    return environment;
}

} // namespace gaugewell
