#pragma once

#include "ProviderKit/GaugewellProvider.h"
#include "ProviderKit/ProviderAuthenticationManager.h"
#include "UsageDomain/Date.h"

#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace gaugewell {

// The `gaugewell` subcommands. Exit codes: 0 success, 1 a failed collection or operation,
// 2 a usage error.
class CommandLine {
public:
    struct Dependencies {
        // The collector for a service name ("codex", "claude"); null for an unknown name.
        std::function<std::shared_ptr<const GaugewellProvider>(std::string_view service)> makeProvider;
        std::function<std::shared_ptr<ProviderAuthenticationManager>()> authentication;
        std::function<Date()> now;
    };

    static constexpr int success = 0;
    static constexpr int failure = 1;
    static constexpr int usageError = 2;

    explicit CommandLine(Dependencies dependencies);

    // `arguments` excludes the program name.
    int run(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) const;

    static std::string usage();

private:
    int probe(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) const;
    int collect(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) const;
    int accounts(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) const;
    int connect(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) const;
    int disconnect(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) const;

    Dependencies dependencies;
};

} // namespace gaugewell
