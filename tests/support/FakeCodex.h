#pragma once

#include "TemporaryDirectory.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace gaugewell::testing {

// A fake `codex` executable in a temporary folder of its own, removed with the object.
// Every fake writes its process id to "pid" in that folder as the first thing it does.
class FakeCodex {
public:
    // A /bin/sh script.
    static FakeCodex shell(std::string_view body);
    // A python3 program. The prelude gives it:
    //   receive()        one line of standard input (recorded in "input"), b"" at its end
    //   send(text)       text and a line feed on standard output, flushed
    //   send_raw(bytes)  bytes as they are, flushed
    //   handshake()      answers initialize and reads the three requests that follow
    //   finish()         ignores SIGTERM, records the rest of the input up to its end, exits 0
    static FakeCodex python(std::string_view body);

    const std::filesystem::path& directory() const { return folder->path(); }
    const std::filesystem::path& executable() const { return executable_; }
    // Everything the python fake has read from its standard input.
    std::string receivedInput() const;
    // The id the fake wrote at its start; absent when it never got that far.
    std::optional<pid_t> pid() const;

private:
    static FakeCodex write(std::string_view text);

    std::unique_ptr<TemporaryDirectory> folder = std::make_unique<TemporaryDirectory>();
    std::filesystem::path executable_;
};

using ScratchDirectory = TemporaryDirectory;

// True when no process with this id exists (not even as a zombie).
bool processIsGone(pid_t pid);
// Children of this process that exist now, running or not yet reaped.
std::vector<pid_t> childrenOfThisProcess();

// The `codex` CLI that scripts/setup.sh installs; fails the calling test when it is missing.
std::filesystem::path realCodexExecutable();

} // namespace gaugewell::testing
