#pragma once

#include "ProviderKit/Process/ChildProcess.h"

#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace gaugewell::testing {

// Debian's Chromium, headless, as the browser of a sign-in test: `open` starts it on the URL with a
// fresh profile below `profileParent`; `close` (or the destructor) ends its process group and reaps it.
class HeadlessChromium {
public:
    static constexpr const char* executable = "/usr/bin/chromium";

    explicit HeadlessChromium(std::filesystem::path profileParent)
        : profileParent(std::move(profileParent)) {}

    static bool isInstalled();
    bool open(const std::string& url);
    void close();

private:
    std::filesystem::path profileParent;
    std::mutex mutex;
    std::optional<ChildProcess> process;
};

} // namespace gaugewell::testing
