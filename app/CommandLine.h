#pragma once

#include "GaugewellUI/Desktop/RunningInstance.h"
#include "GaugewellUI/Model/UsageAppModel.h"
#include "GaugewellWidgetSupport/WidgetUsageLoader.h"
#include "Platform/UserDefaults.h"
#include "ProviderKit/Authentication/ProviderAuthenticationManager.h"
#include "ProviderKit/GaugewellProvider.h"
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
        std::function<std::shared_ptr<UserDefaults>()> defaults;
        // A model over the real (or, in tests, fake) services; notifications are optional.
        std::function<std::unique_ptr<UsageAppModel>(UsageAppModel::RefreshHooks)> makeModel;
        // One read of a running Gaugewell's widget feed.
        std::function<WidgetFetchResult()> fetchWidget;
        // Asks the running tray application to act (`Activate` when the request is absent).
        std::function<Status<RunningInstanceError>(const std::optional<ApplicationRequest>&)>
            askRunningInstance;
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
    int status(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) const;
    int report(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) const;
    int daemon(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) const;
    int widget(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) const;
    int config(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) const;
    int show(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) const;
    int quit(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) const;

    Dependencies dependencies;
};

} // namespace gaugewell
