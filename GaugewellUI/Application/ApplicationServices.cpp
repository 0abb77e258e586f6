#include "ApplicationServices.h"

#include "ClaudeProvider/ClaudeUsageProvider.h"
#include "CodexProvider/CodexUsageProvider.h"
#include "Platform/FileUserDefaults.h"
#include "Platform/SecretStore.h"
#include "Platform/SettingsKeys.h"
#include "ProviderKit/ClaudeSignIn/ClaudeCredentialStore.h"
#include "ProviderKit/Http/CurlHttpClient.h"
#include "ProviderKit/Process/ChildProcess.h"
#include "ProviderKit/Process/PosixCommandRunner.h"

#include <chrono>

namespace gaugewell {

Expected<ApplicationServices, std::string> ApplicationServices::make(const Environment& environment,
                                                                     BrowserOpener browserOpener) {
    const auto endpoints = ClaudeEndpoints::fromEnvironment(environment);
    if (!endpoints) {
        return unexpected(std::string(describe(endpoints.error())));
    }
    const auto home = environment.count("HOME") != 0 ? std::filesystem::path(environment.at("HOME"))
                                                     : std::filesystem::path("/");

    ApplicationServices services;
    services.settingsFile = std::make_shared<FileUserDefaults>(FileUserDefaults::standardLocation());
    services.defaults = services.settingsFile;
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
            std::string(settingsKey::oauthAuthorizedPrefix),
            std::make_shared<ClaudeSessionAuthenticator>(services.claudeSession),
            services.codexSession,
            environment});
    services.collectors[ProviderService::codex] =
        std::make_shared<CodexUsageProvider>(std::nullopt, ExecutableLocator(), runner, home, environment);
    services.collectors[ProviderService::claude] =
        std::make_shared<ClaudeUsageProvider>(services.claudeSession, services.http, *endpoints);
    return services;
}

bool openWithDesktopBrowser(const std::string& url) {
    auto spawned = ChildProcess::spawn(
        "/usr/bin/xdg-open", {url}, currentProcessEnvironment(),
        {ChildProcess::Stream::null, ChildProcess::Stream::null, ChildProcess::Stream::null},
        ChildProcess::Reach::childOnly);
    if (!spawned) {
        return false;
    }
    ChildProcess opener = std::move(spawned).value();
    // xdg-open returns once the browser has the URL; a hung handler must not hold a sign-in.
    if (!opener.waitForExit(Deadline::after(std::chrono::seconds(10)))) {
        opener.terminate();
        return false;
    }
    return opener.terminationStatus() == 0;
}

} // namespace gaugewell
