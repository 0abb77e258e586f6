#include "HeadlessChromium.h"

#include <unistd.h>

namespace gaugewell::testing {

HeadlessChromium::HeadlessChromium(std::filesystem::path profileParent)
    : profileParent(std::move(profileParent)) {}

HeadlessChromium::~HeadlessChromium() {
    close();
}

bool HeadlessChromium::isInstalled() {
    return ::access(executable, X_OK) == 0;
}

bool HeadlessChromium::open(const std::string& url) {
    std::filesystem::create_directories(profileParent);
    std::string pattern = (profileParent / "chromium-profile.XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) {
        return false;
    }
    std::vector<std::string> arguments{executable,
                                       "--headless",
                                       "--disable-gpu",
                                       "--disable-quic",
                                       "--no-first-run",
                                       "--disable-background-networking",
                                       "--disable-component-update",
                                       "--disable-sync",
                                       "--disable-dev-shm-usage",
                                       "--user-data-dir=" + pattern};
    if (::geteuid() == 0) {
        arguments.push_back("--no-sandbox");
    }
    arguments.push_back(url);
    auto process = SpawnedProcess::start(arguments, {}, SpawnedProcess::Output::discard);
    if (!process) {
        return false;
    }
    std::lock_guard lock(mutex);
    processes.push_back(std::move(process));
    return true;
}

void HeadlessChromium::close() {
    std::lock_guard lock(mutex);
    for (auto& process : processes) {
        process->kill();
    }
    processes.clear();
}

} // namespace gaugewell::testing
