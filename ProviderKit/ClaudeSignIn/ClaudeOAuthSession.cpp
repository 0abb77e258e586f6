#include "ProviderKit/ClaudeSignIn/ClaudeOAuthSession.h"

#include "Platform/SecureWipe.h"
#include "ProviderKit/ClaudeSignIn/OAuthLoopbackServer.h"
#include "ProviderKit/ClaudeSignIn/Pkce.h"
#include "UsageDomain/JsonCoding.h"

#include <algorithm>
#include <optional>

namespace gaugewell {

namespace {

// The token endpoint's answer.
struct TokenAnswer {
    std::string accessToken;
    std::optional<std::string> refreshToken;
    double expiresIn = 0;
    std::optional<std::string> scope;
};

} // namespace

template <> struct JsonCoder<TokenAnswer> {
    static TokenAnswer decode(const JsonValue& json, const std::string& path) {
        const KeyedDecoder decoder(json, path);
        return TokenAnswer{
            decoder.decode<std::string>("access_token"),
            decoder.decodeIfPresent<std::string>("refresh_token"),
            decoder.decode<double>("expires_in"),
            decoder.decodeIfPresent<std::string>("scope"),
        };
    }
};

namespace {

// What a URL query may hold as it is, after RFC 3986; "&", "=" and "+" are escaped too so that a value
// can never be read as a separator or a space.
bool isQueryValueCharacter(unsigned char c) {
    if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')) {
        return true;
    }
    return std::string_view("-._~!$'()*,;:@/?").find(static_cast<char>(c)) != std::string_view::npos;
}

std::string percentEncodedQueryValue(std::string_view text) {
    static constexpr char hex[] = "0123456789ABCDEF";
    std::string result;
    result.reserve(text.size());
    for (const char character : text) {
        const auto c = static_cast<unsigned char>(character);
        if (isQueryValueCharacter(c)) {
            result.push_back(character);
        } else {
            result.push_back('%');
            result.push_back(hex[c >> 4]);
            result.push_back(hex[c & 15]);
        }
    }
    return result;
}

std::string joined(const std::vector<std::string>& pieces) {
    std::string result;
    for (const auto& piece : pieces) {
        if (!result.empty()) {
            result.push_back(' ');
        }
        result += piece;
    }
    return result;
}

std::vector<std::string> splitAtSpaces(std::string_view text) {
    std::vector<std::string> pieces;
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t end = std::min(text.find(' ', start), text.size());
        if (end > start) {
            pieces.emplace_back(text.substr(start, end - start));
        }
        start = end + 1;
    }
    return pieces;
}

} // namespace

const std::vector<std::string>& ClaudeOAuthSession::scopes() {
    static const std::vector<std::string> values{"org:create_api_key", "user:profile"};
    return values;
}

ClaudeOAuthSession::ClaudeOAuthSession(ClaudeCredentialStore store, std::shared_ptr<HttpClient> http,
                                       ClaudeEndpoints endpoints, BrowserOpener openBrowser, Clock now)
    : store(std::move(store))
    , http(std::move(http))
    , endpoints(std::move(endpoints))
    , openBrowser(std::move(openBrowser))
    , now(std::move(now)) {}

ClaudeOAuthSession::~ClaudeOAuthSession() = default;

std::string ClaudeOAuthSession::authorizationURL(const ClaudeEndpoints& endpoints,
                                                 std::string_view redirectURI, std::string_view codeChallenge,
                                                 std::string_view state) {
    const std::pair<std::string_view, std::string> items[] = {
        {"code", "true"},
        {"client_id", std::string(clientID)},
        {"response_type", "code"},
        {"redirect_uri", std::string(redirectURI)},
        {"scope", joined(scopes())},
        {"code_challenge", std::string(codeChallenge)},
        {"code_challenge_method", "S256"},
        {"state", std::string(state)},
    };
    std::string url = endpoints.authorizeURL();
    char separator = '?';
    for (const auto& [name, value] : items) {
        url.push_back(separator);
        url += name;
        url.push_back('=');
        url += percentEncodedQueryValue(value);
        separator = '&';
    }
    return url;
}

namespace {

// One POST to a token endpoint; nothing of a failed answer is looked at beyond its status.
std::optional<TokenAnswer> requestToken(HttpClient& http, const std::string& url, const JsonValue& body) {
    HttpRequest request;
    request.method = "POST";
    request.url = url;
    request.headers = {{"Content-Type", "application/json"}, {"Accept", "application/json"}};
    request.body = body.serialized();
    request.timeout = ClaudeOAuthSession::tokenRequestTimeout;
    request.maximumResponseBytes = ClaudeOAuthSession::maximumTokenResponseBytes;
    auto response = http.send(request);
    secureWipe(request.body);
    if (!response || response->status != 200) {
        return std::nullopt;
    }
    auto answer = decodeJson<TokenAnswer>(response->body);
    auto responseBody = std::move(response).value().body;
    secureWipe(responseBody);
    if (!answer) {
        return std::nullopt;
    }
    return std::move(answer).value();
}

ClaudeOAuthCredential credentialFrom(const TokenAnswer& answer, std::string refreshToken, Date now) {
    std::vector<std::string> grantedScopes =
        answer.scope ? splitAtSpaces(*answer.scope) : ClaudeOAuthSession::scopes();
    return ClaudeOAuthCredential{answer.accessToken, std::move(refreshToken),
                                 addingSeconds(now, answer.expiresIn), std::move(grantedScopes)};
}

} // namespace

bool ClaudeOAuthSession::isSignedIn() {
    std::lock_guard lock(operationMutex);
    const auto loaded = store.load();
    return loaded && loaded->has_value();
}

Expected<std::string, ClaudeOAuthError> ClaudeOAuthSession::validAccessToken() {
    std::lock_guard lock(operationMutex);
    auto loaded = store.load();
    if (!loaded) {
        return unexpected(loaded.error());
    }
    if (!loaded->has_value()) {
        return unexpected(ClaudeOAuthError::signedOut);
    }
    const ClaudeOAuthCredential& credential = **loaded;
    const Date current = now();
    if (credential.expiresAt - current > refreshMargin) {
        return credential.accessToken;
    }

    const JsonValue body = KeyedEncoder()
                               .encode("grant_type", std::string("refresh_token"))
                               .encode("refresh_token", credential.refreshToken)
                               .encode("client_id", std::string(clientID))
                               .encode("scope", joined(credential.scopes))
                               .result();
    const auto answer = requestToken(*http, endpoints.tokenURL(), body);
    if (!answer) {
        return unexpected(ClaudeOAuthError::tokenRefreshFailed);
    }
    const auto refreshed =
        credentialFrom(*answer, answer->refreshToken.value_or(credential.refreshToken), now());
    if (auto saved = store.save(refreshed); !saved) {
        return unexpected(saved.error());
    }
    return refreshed.accessToken;
}

Status<ClaudeOAuthError> ClaudeOAuthSession::login() {
    std::lock_guard lock(operationMutex);
    {
        std::lock_guard loginLock(loginMutex);
        loginRunning = true;
        loginCancelled = false;
    }
    auto result = runLogin();
    {
        std::lock_guard loginLock(loginMutex);
        loginRunning = false;
        activeServer = nullptr;
    }
    return result;
}

void ClaudeOAuthSession::cancelLogin() {
    std::lock_guard loginLock(loginMutex);
    if (!loginRunning) {
        return;
    }
    loginCancelled = true;
    if (activeServer != nullptr) {
        activeServer->cancel();
    }
}

Status<ClaudeOAuthError> ClaudeOAuthSession::runLogin() {
    auto opened = OAuthLoopbackServer::open(endpoints.successPageURL());
    if (!opened) {
        return unexpected(opened.error());
    }
    const std::unique_ptr<OAuthLoopbackServer> server = std::move(opened).value();
    {
        std::lock_guard loginLock(loginMutex);
        activeServer = server.get();
        if (loginCancelled) {
            server->cancel(); // the wait below ends at once
        }
    }
    // Whatever happens below, the server must not be reachable for a cancel after it is gone.
    struct ServerRelease {
        ClaudeOAuthSession& session;
        ~ServerRelease() {
            std::lock_guard loginLock(session.loginMutex);
            session.activeServer = nullptr;
        }
    } release{*this};

    auto verifier = Pkce::randomURLSafeString(Pkce::verifierByteCount);
    const auto state = Pkce::randomURLSafeString(Pkce::stateByteCount);
    if (!verifier || !state) {
        return unexpected(ClaudeOAuthError::callbackFailed);
    }
    const std::string redirectURI = "http://localhost:" + std::to_string(server->port()) + "/callback";
    const std::string url = authorizationURL(endpoints, redirectURI, Pkce::challenge(*verifier), *state);

    bool browserOpened = false;
    try {
        browserOpened = openBrowser && openBrowser(url);
    } catch (...) {
        browserOpened = false;
    }
    if (!browserOpened) {
        return unexpected(ClaudeOAuthError::browserCouldNotOpen);
    }

    auto callback = server->waitForCallback(redirectTimeout);
    if (!callback) {
        return unexpected(callback.error());
    }
    if (callback->state != *state) {
        return unexpected(ClaudeOAuthError::stateMismatch);
    }

    const JsonValue body = KeyedEncoder()
                               .encode("grant_type", std::string("authorization_code"))
                               .encode("code", callback->code)
                               .encode("redirect_uri", redirectURI)
                               .encode("client_id", std::string(clientID))
                               .encode("code_verifier", *verifier)
                               .encode("state", *state)
                               .result();
    secureWipe(*verifier);
    const auto answer = requestToken(*http, endpoints.tokenURL(), body);
    if (!answer || !answer->refreshToken) {
        return unexpected(ClaudeOAuthError::tokenExchangeFailed);
    }
    const auto credential = credentialFrom(*answer, *answer->refreshToken, now());
    return store.save(credential);
}

Status<ClaudeOAuthError> ClaudeOAuthSession::logout() {
    std::lock_guard lock(operationMutex);
    const auto loaded = store.load();
    if (loaded && loaded->has_value()) {
        const JsonValue body = KeyedEncoder()
                                   .encode("token", (*loaded)->refreshToken)
                                   .encode("token_type_hint", std::string("refresh_token"))
                                   .encode("client_id", std::string(clientID))
                                   .result();
        HttpRequest request;
        request.method = "POST";
        request.url = endpoints.revocationURL();
        request.headers = {{"Content-Type", "application/json"}};
        request.body = body.serialized();
        request.timeout = tokenRequestTimeout;
        request.maximumResponseBytes = maximumTokenResponseBytes;
        // Signing out must work offline: the answer, whatever it is, does not matter.
        [[maybe_unused]] const auto ignored = http->send(request);
        secureWipe(request.body);
    }
    return store.remove();
}

} // namespace gaugewell
