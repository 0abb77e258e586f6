#include "ProviderKit/Authentication/ProviderAuthenticationManager.h"

#include "ProviderKit/CodexSignIn/CodexExecutable.h"
#include "UsageDomain/Translatable.h"

#include <algorithm>

namespace gaugewell {

namespace {

using Connection = ProviderConnectionStatus;

ProviderConnectionState state(ProviderService service, Connection status, const char* detail) {
    return {service, status, std::string(detail)};
}

// UTF-8 with invalid bytes replaced would only matter for display; here only ASCII
// substrings are looked for, so lower-casing the ASCII letters is enough.
std::string lowercased(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) {
        return c < 0x80 ? static_cast<char>(std::tolower(c)) : static_cast<char>(c);
    });
    return text;
}

} // namespace

ProviderAuthenticationManager::ProviderAuthenticationManager(Dependencies dependencies)
    : dependencies(std::move(dependencies)) {}

std::string ProviderAuthenticationManager::codexAuthorizationKey() const {
    return dependencies.authorizationKeyPrefix + ".codex";
}

std::optional<ProviderAuthenticationManager::LocatedCodex>
ProviderAuthenticationManager::locateCodex() const {
    const auto configured = dependencies.configuredExecutables.find(ProviderService::codex);
    const auto executable = CodexExecutable::locate(
        dependencies.locator,
        configured == dependencies.configuredExecutables.end() ? std::nullopt
                                                               : std::optional(configured->second),
        dependencies.homeDirectory, dependencies.processEnvironment);
    if (!executable) {
        return std::nullopt;
    }
    return LocatedCodex{*executable,
                        CodexExecutable::childEnvironment(*executable, dependencies.processEnvironment)};
}

bool ProviderAuthenticationManager::isAppServerCapable(const LocatedCodex& codex) {
    if (appServerCapableCodexURL == codex.executable) {
        return true;
    }
    const auto help = dependencies.commandRunner->run(codex.executable, {"app-server", "--help"},
                                                      codex.environment, std::chrono::seconds(5), 65536);
    if (!help || help->status != 0) {
        return false;
    }
    appServerCapableCodexURL = codex.executable;
    return true;
}

ProviderConnectionState ProviderAuthenticationManager::codexLoginStatus() {
    const auto codex = locateCodex();
    if (!codex) {
        return state(ProviderService::codex, Connection::notInstalled,
                     QT_TRANSLATE_NOOP("Localizable", "Command-line tool not found"));
    }
    if (!isAppServerCapable(*codex)) {
        return state(ProviderService::codex, Connection::unsupportedVersion,
                     QT_TRANSLATE_NOOP("Localizable", "Codex must be updated to support live usage access"));
    }
    const auto output = dependencies.commandRunner->run(codex->executable, {"login", "status"},
                                                        codex->environment, std::chrono::seconds(8), 65536);
    if (!output) {
        return state(ProviderService::codex, Connection::failed,
                     QT_TRANSLATE_NOOP("Localizable", "Authentication status could not be checked"));
    }
    if (output->status != 0) {
        return state(ProviderService::codex, Connection::signedOut,
                     QT_TRANSLATE_NOOP("Localizable", "ChatGPT sign-in required"));
    }
    // Only standard output counts; the tool's chatter on standard error is not an answer.
    const std::string text = lowercased(output->standardOutput);
    if (text.find("chatgpt") != std::string::npos) {
        return state(ProviderService::codex, Connection::signedIn,
                     QT_TRANSLATE_NOOP("Localizable", "ChatGPT account"));
    }
    if (text.find("api key") != std::string::npos || text.find("api-key") != std::string::npos) {
        return state(ProviderService::codex, Connection::signedIn,
                     QT_TRANSLATE_NOOP("Localizable", "OpenAI API key"));
    }
    return state(ProviderService::codex, Connection::signedIn,
                 QT_TRANSLATE_NOOP("Localizable", "Codex account"));
}

ProviderConnectionState ProviderAuthenticationManager::status(ProviderService service) {
    const std::lock_guard lock(operations[static_cast<std::size_t>(service)]);
    if (service == ProviderService::claude) {
        return dependencies.claude->isSignedIn()
                   ? state(service, Connection::signedIn,
                           QT_TRANSLATE_NOOP("Localizable", "Claude account · keyring"))
                   : state(service, Connection::signedOut,
                           QT_TRANSLATE_NOOP("Localizable", "Claude sign-in required"));
    }
    auto current = codexLoginStatus();
    const bool authorized =
        dependencies.authorizationDefaults->storedBool(codexAuthorizationKey()).value_or(false);
    if (current.status == Connection::signedIn && !authorized) {
        return state(
            service, Connection::disconnected,
            QT_TRANSLATE_NOOP("Localizable", "Account available — connect to authorize usage access"));
    }
    return current;
}

ProviderConnectionState ProviderAuthenticationManager::login(ProviderService service) {
    const std::lock_guard lock(operations[static_cast<std::size_t>(service)]);
    if (service == ProviderService::claude) {
        return dependencies.claude->login()
                   ? state(service, Connection::signedIn,
                           QT_TRANSLATE_NOOP("Localizable", "Claude account · keyring"))
                   : state(service, Connection::failed,
                           QT_TRANSLATE_NOOP("Localizable", "Claude sign-in was not completed"));
    }
    const auto codex = locateCodex();
    if (!codex) {
        return state(service, Connection::notInstalled,
                     QT_TRANSLATE_NOOP("Localizable", "Command-line tool not found"));
    }
    if (!isAppServerCapable(*codex)) {
        return state(service, Connection::unsupportedVersion,
                     QT_TRANSLATE_NOOP("Localizable", "Codex must be updated to support live usage access"));
    }
    if (const auto error = dependencies.codex->login(codex->executable, codex->environment)) {
        return error->kind == CodexOAuthError::Kind::timedOut
                   ? state(service, Connection::failed, QT_TRANSLATE_NOOP("Localizable", "Sign-in timed out"))
                   : state(service, Connection::failed,
                           QT_TRANSLATE_NOOP("Localizable", "ChatGPT sign-in was not completed"));
    }
    auto after = codexLoginStatus();
    if (after.status == Connection::signedIn) {
        dependencies.authorizationDefaults->set(codexAuthorizationKey(), true);
    }
    return after;
}

ProviderConnectionState ProviderAuthenticationManager::disconnect(ProviderService service) {
    const std::lock_guard lock(operations[static_cast<std::size_t>(service)]);
    if (service == ProviderService::claude) {
        return dependencies.claude->logout()
                   ? state(service, Connection::signedOut,
                           QT_TRANSLATE_NOOP("Localizable", "Tokens revoked and removed from the keyring"))
                   : state(service, Connection::failed,
                           QT_TRANSLATE_NOOP("Localizable", "Claude credentials could not be removed"));
    }
    const auto codex = locateCodex();
    if (!codex) {
        dependencies.authorizationDefaults->set(codexAuthorizationKey(), false);
        return state(service, Connection::notInstalled,
                     QT_TRANSLATE_NOOP("Localizable", "Command-line tool not found"));
    }
    if (dependencies.codex->logout(codex->executable, codex->environment)) {
        return state(service, Connection::failed,
                     QT_TRANSLATE_NOOP("Localizable", "ChatGPT sign-out could not be completed"));
    }
    dependencies.authorizationDefaults->set(codexAuthorizationKey(), false);
    return state(service, Connection::signedOut, QT_TRANSLATE_NOOP("Localizable", "Signed out from ChatGPT"));
}

void ProviderAuthenticationManager::cancelLogin() {
    // Deliberately not under `operations`: one is held by the sign-in being cancelled.
    dependencies.claude->cancelLogin();
    dependencies.codex->cancel();
}

} // namespace gaugewell
