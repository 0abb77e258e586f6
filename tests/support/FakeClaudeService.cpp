#include "FakeClaudeService.h"

namespace gaugewell::testing {

FakeClaudeService::FakeClaudeService() {
    http.route("/cai/oauth/authorize", [this](const RecordedHttpRequest& request) {
        const auto redirect = request.queryItem("redirect_uri");
        const auto state = request.queryItem("state");
        if (!redirect || !state) {
            return ScriptedHttpResponse::json(400, R"({"error":"invalid_request"})");
        }
        std::lock_guard lock(mutex);
        redirectLocation =
            *redirect + "?code=" + authorizationCode + "&state=" + stateOverride.value_or(*state);
        return ScriptedHttpResponse::redirect(*redirectLocation);
    });
    http.route("/oauth/code/success", [](const RecordedHttpRequest&) {
        return ScriptedHttpResponse{200,
                                    {{"Content-Type", "text/html"}},
                                    "<p>Signed in.</p>",
                                    ScriptedHttpResponse::Behavior::respond};
    });
    http.route("/v1/oauth/token", [this](const RecordedHttpRequest&) {
        std::lock_guard lock(mutex);
        std::string body = R"({"access_token":")" + tokenScript.accessToken + "\"";
        if (tokenScript.refreshToken) {
            body += R"(,"refresh_token":")" + *tokenScript.refreshToken + "\"";
        }
        body += R"(,"expires_in":)" + std::to_string(tokenScript.expiresIn);
        if (tokenScript.scope) {
            body += R"(,"scope":")" + *tokenScript.scope + "\"";
        }
        body += R"(,"token_type":"Bearer"})";
        return ScriptedHttpResponse::json(tokenScript.status, body);
    });
    http.route("/v1/oauth/token/revoke",
               [](const RecordedHttpRequest&) { return ScriptedHttpResponse::json(200, "{}"); });
    http.route("/api/oauth/usage", [this](const RecordedHttpRequest& request) {
        std::lock_guard lock(mutex);
        const std::string wanted = "Bearer " + expectedAccessToken.value_or(tokenScript.accessToken);
        if (request.header("Authorization") != wanted) {
            return ScriptedHttpResponse::json(401, R"({"error":"unauthorized"})");
        }
        return ScriptedHttpResponse::json(usageStatus, usageBody);
    });
}

ClaudeEndpoints FakeClaudeService::endpoints() const {
    const auto base = http.baseURL();
    return ClaudeEndpoints::make(base, base, base).value();
}

void FakeClaudeService::setAuthorizationCode(std::string code) {
    std::lock_guard lock(mutex);
    authorizationCode = std::move(code);
}

void FakeClaudeService::setStateOverride(std::optional<std::string> state) {
    std::lock_guard lock(mutex);
    stateOverride = std::move(state);
}

void FakeClaudeService::setTokenScript(TokenScript script) {
    std::lock_guard lock(mutex);
    tokenScript = std::move(script);
}

void FakeClaudeService::setUsage(int status, std::string body) {
    std::lock_guard lock(mutex);
    usageStatus = status;
    usageBody = std::move(body);
}

void FakeClaudeService::setExpectedAccessToken(std::optional<std::string> token) {
    std::lock_guard lock(mutex);
    expectedAccessToken = std::move(token);
}

std::optional<std::string> FakeClaudeService::lastRedirectLocation() const {
    std::lock_guard lock(mutex);
    return redirectLocation;
}

std::string FakeClaudeService::typicalUsageBody() {
    return R"({"five_hour":{"utilization":41.5,"resets_at":"2026-11-22T18:00:00.123456+00:00"},)"
           R"("seven_day":{"utilization":12,"resets_at":"2026-11-27T09:00:00Z"},)"
           R"("seven_day_oauth_apps":null,)"
           R"("seven_day_opus":{"utilization":0,"resets_at":null},)"
           R"("seven_day_sonnet":{"utilization":3.25,"resets_at":"2026-11-27T09:00:00+01:00"},)"
           R"("extra_usage":{"is_enabled":false}})";
}

} // namespace gaugewell::testing
