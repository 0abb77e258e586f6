#include "FakeCodex.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <unistd.h>

namespace gaugewell::testing {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view pythonPrelude = R"PY(#!/usr/bin/python3
import os, signal, sys
_here = os.path.dirname(os.path.abspath(__file__))
with open(os.path.join(_here, "pid"), "w") as _pid:
    _pid.write(str(os.getpid()))
_input = open(os.path.join(_here, "input"), "ab", buffering=0)

def receive():
    line = sys.stdin.buffer.readline()
    _input.write(line)
    return line

def send_raw(data):
    sys.stdout.buffer.write(data)
    sys.stdout.buffer.flush()

def send(text):
    send_raw(text.encode() + b"\n")

def handshake():
    receive()
    send('{"id":1,"result":{"userAgent":"fake"}}')
    for _ in range(3):
        receive()

def finish():
    signal.signal(signal.SIGTERM, signal.SIG_IGN)
    while True:
        data = sys.stdin.buffer.read(4096)
        if not data:
            break
        _input.write(data)
    sys.exit(0)

)PY";

std::string readFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

} // namespace

FakeCodex FakeCodex::write(std::string_view text) {
    FakeCodex fake;
    fake.executable_ = fake.directory() / "codex";
    writeFile(fake.executable_, std::string(text), fs::perms(0750));
    return fake;
}

FakeCodex FakeCodex::shell(std::string_view body) {
    return write("#!/bin/sh\necho $$ > \"$(dirname \"$0\")/pid\"\n" + std::string(body) + "\n");
}

FakeCodex FakeCodex::python(std::string_view body) {
    return write(std::string(pythonPrelude) + std::string(body) + "\n");
}

std::string FakeCodex::receivedInput() const {
    return readFile(directory() / "input");
}

std::optional<pid_t> FakeCodex::pid() const {
    const std::string text = readFile(directory() / "pid");
    if (text.empty()) {
        return std::nullopt;
    }
    return static_cast<pid_t>(std::stol(text));
}

bool processIsGone(pid_t pid) {
    return ::kill(pid, 0) != 0 && errno == ESRCH;
}

std::vector<pid_t> childrenOfThisProcess() {
    std::vector<pid_t> children;
    const std::string self = std::to_string(::getpid());
    std::error_code error;
    for (const auto& entry : fs::directory_iterator("/proc", error)) {
        const std::string stat = readFile(entry.path() / "stat");
        // pid (comm) state ppid ...; comm may hold spaces and parentheses, so look after the last ')'.
        const auto close = stat.rfind(')');
        if (close == std::string::npos) {
            continue;
        }
        std::istringstream rest(stat.substr(close + 1));
        std::string state;
        std::string parent;
        rest >> state >> parent;
        if (parent == self) {
            children.push_back(static_cast<pid_t>(std::stol(entry.path().filename().string())));
        }
    }
    return children;
}

fs::path realCodexExecutable() {
    const fs::path path = fs::path(GAUGEWELL_SOURCE_DIR) / ".deps/codex/node_modules/.bin/codex";
    if (::access(path.c_str(), X_OK) != 0) {
        ADD_FAILURE() << "The real codex CLI is missing at " << path.string()
                      << "; run scripts/setup.sh to install @openai/codex into .deps/codex.";
    }
    return path;
}

} // namespace gaugewell::testing
