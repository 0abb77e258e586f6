#include "ProviderKit/Process/Environment.h"

#include <unistd.h>

namespace gaugewell {

Environment currentProcessEnvironment() {
    Environment environment;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        const std::string text(*entry);
        const auto equals = text.find('=');
        if (equals != std::string::npos && equals > 0) {
            environment.emplace(text.substr(0, equals), text.substr(equals + 1));
        }
    }
    return environment;
}

} // namespace gaugewell
