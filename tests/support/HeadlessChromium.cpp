#include "HeadlessChromium.h"

#include <unistd.h>

namespace gaugewell::testing {

bool HeadlessChromium::isInstalled() {
    return ::access(executable, X_OK) == 0;
}

bool HeadlessChromium::open(const std::string& url) {
    std::filesystem::create_directories(profileParent);
    std::string profile = (profileParent / "chromium-profile.XXXXXX").string();
    if (::mkdtemp(profile.data()) == nullptr) {
        return false;
    }
    std::vector<std::string> arguments{"--headless",
                                       "--disable-gpu",
                                       "--disable-quic",
                                       "--no-first-run",
                                       "--disable-background-networking",
                                       "--disable-sync",
                                       "--disable-component-update",
                                       "--disable-dev-shm-usage",
                                       "--user-data-dir=" + profile};
    if (::geteuid() == 0) {
        arguments.push_back("--no-sandbox");
    }
    arguments.push_back(url);
    auto started = ChildProcess::spawn(
        executable, arguments, currentProcessEnvironment(),
        {ChildProcess::Stream::null, ChildProcess::Stream::null, ChildProcess::Stream::null});
    std::lock_guard lock(mutex);
    process.reset(); // a browser opened earlier is ended
    if (started) {
        process = std::move(started).value();
    }
    return process.has_value();
}

void HeadlessChromium::close() {
    std::lock_guard lock(mutex);
    process.reset();
}

} // namespace gaugewell::testing
