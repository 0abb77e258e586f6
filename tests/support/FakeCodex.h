#pragma once

#include <filesystem>
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

    FakeCodex(FakeCodex&& other) noexcept;
    FakeCodex& operator=(FakeCodex&&) = delete;
    ~FakeCodex();

    const std::filesystem::path& directory() const { return directory_; }
    const std::filesystem::path& executable() const { return executable_; }
    // Everything the python fake has read from its standard input.
    std::string receivedInput() const;
    // The id the fake wrote at its start; absent when it never got that far.
    std::optional<pid_t> pid() const;

private:
    FakeCodex(std::filesystem::path directory, std::filesystem::path executable)
        : directory_(std::move(directory))
        , executable_(std::move(executable)) {}
    static FakeCodex write(std::string_view text);

    std::filesystem::path directory_;
    std::filesystem::path executable_;
};

// A fresh folder under the temporary directory, removed with the object.
class ScratchDirectory {
public:
    ScratchDirectory();
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;
    ~ScratchDirectory();
    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

// True when no process with this id exists (not even as a zombie).
bool processIsGone(pid_t pid);
// Children of this process that exist now, running or not yet reaped.
std::vector<pid_t> childrenOfThisProcess();

// The `codex` CLI that scripts/setup.sh installs; fails the calling test when it is missing.
std::filesystem::path realCodexExecutable();

} // namespace gaugewell::testing
