#pragma once

#include "ProviderKit/Process/CommandRunning.h"

#include <chrono>

namespace gaugewell {

// Runs a child to completion on the calling thread: it waits for the exit, then reads what the
// child left in its pipes. Every run owns its child and its pipes, so any
// number of threads may run commands at the same time.
class PosixCommandRunner final : public CommandRunning {
public:
    // How long a child has to go after SIGTERM at the deadline before it is killed.
    static constexpr std::chrono::milliseconds terminationGrace{500};

    Expected<CommandOutput, ProcessSupportError> run(const std::filesystem::path& executable,
                                                     const std::vector<std::string>& arguments,
                                                     const Environment& environment,
                                                     std::chrono::milliseconds timeout,
                                                     std::int64_t outputLimit) const override;
};

} // namespace gaugewell
