#include "ApplicationServices.h"

#include "ClaudeProvider/ClaudeUsageProvider.h"
#include "CodexProvider/CodexUsageProvider.h"
#include "Platform/FileUserDefaults.h"
#include "Platform/SecretStore.h"
#include "ProviderKit/ChildProcess.h"
#include "ProviderKit/ClaudeCredentialStore.h"
#include "ProviderKit/CurlHttpClient.h"
#include "ProviderKit/PosixCommandRunner.h"

#include <chrono>
#include <thread>

namespace gaugewell {

namespace {

std::string endpointProblem(ClaudeEndpointsError error) {
    const char* variable = error == ClaudeEndpointsError::invalidSignInURL ? "GAUGEWELL_CLAUDE_SIGNIN_URL"
                           : error == ClaudeEndpointsError::invalidPlatformURL
                               ? "GAUGEWELL_CLAUDE_PLATFORM_URL"
                               : "GAUGEWELL_CLAUDE_API_URL";
    return std::string(variable) + " must be an https:// base URL (http:// only for a loopback host)";
}

} // namespace

Expected<ApplicationServices, std::string> ApplicationServices::make(const Environment& environment,
                                                                     BrowserOpener browserOpener) {
    const auto endpoints = ClaudeEndpoints::fromEnvironment(environment);
    if (!endpoints) {
        return unexpected(endpointProblem(endpoints.error()));
    }
    const auto home = environment.count("HOME") != 0 ? std::filesystem::path(environment.at("HOME"))
                                                     : std::filesystem::path("/");

    ApplicationServices services;
    services.defaults = std::make_shared<FileUserDefaults>(FileUserDefaults::standardLocation());
    services.http = std::make_shared<CurlHttpClient>();
    services.claudeSession =
        std::make_shared<ClaudeOAuthSession>(ClaudeCredentialStore(std::make_shared<LibsecretSecretStore>()),
                                             services.http, *endpoints, browserOpener);
    services.codexSession = std::make_shared<CodexOAuthSession>(browserOpener);
    const auto runner = std::make_shared<PosixCommandRunner>();
    services.authentication =
        std::make_shared<ProviderAuthenticationManager>(ProviderAuthenticationManager::Dependencies{
            ExecutableLocator(),
            runner,
            home,
            {},
            services.defaults,
            "connections.oauth-authorized.v2",
            std::make_shared<ClaudeSessionAuthenticator>(services.claudeSession),
            services.codexSession,
            environment});
    services.codexCollector =
        std::make_shared<CodexUsageProvider>(std::nullopt, ExecutableLocator(), runner, home, environment);
    services.claudeCollector =
        std::make_shared<ClaudeUsageProvider>(services.claudeSession, services.http, *endpoints);
    return services;
}

bool openWithDesktopBrowser(const std::string& url) {
    auto spawned = ChildProcess::spawn(
        "/usr/bin/xdg-open", {url}, currentProcessEnvironment(),
        {ChildProcess::Stream::null, ChildProcess::Stream::null, ChildProcess::Stream::null});
    if (!spawned) {
        return false;
    }
    ChildProcess opener = std::move(spawned).value();
    // xdg-open returns once the browser has the URL; a hung handler must not hold a sign-in.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (opener.isRunning()) {
        if (std::chrono::steady_clock::now() >= deadline) {
            opener.terminate();
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return opener.terminationStatus() == 0;
}

} // namespace gaugewell
