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
    std::vector<std::string> arguments{executable,
                                       "--headless",
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
    auto started = SpawnedProcess::start(arguments, {}, SpawnedProcess::Output::discard);
    std::lock_guard lock(mutex);
    process = std::move(started); // a browser opened earlier is killed
    return process != nullptr;
}

void HeadlessChromium::close() {
    std::lock_guard lock(mutex);
    process.reset();
}

} // namespace gaugewell::testing
