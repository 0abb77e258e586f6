#include "FakeClaudeService.h"

#include "UsageDomain/JsonCoding.h"

namespace gaugewell::testing {

FakeClaudeService::FakeClaudeService() {
    http.route("/cai/oauth/authorize", [this](const httplib::Request& request) {
        if (!request.has_param("redirect_uri") || !request.has_param("state")) {
            return HttpAnswer{400, R"({"error":"invalid_request"})"};
        }
        std::lock_guard lock(mutex);
        redirectLocation = request.get_param_value("redirect_uri") + "?code=" + authorizationCode +
                           "&state=" + stateOverride.value_or(request.get_param_value("state"));
        return HttpAnswer{302, {}, {}, {{"Location", *redirectLocation}}};
    });
    http.route("/oauth/code/success", HttpAnswer{200, "<p>Signed in.</p>", "text/html"});
    http.route("/v1/oauth/token", [this](const httplib::Request&) {
        std::lock_guard lock(mutex);
        KeyedEncoder answer;
        answer.encode("access_token", tokenScript.accessToken)
            .encodeIfPresent("refresh_token", tokenScript.refreshToken)
            .encode("expires_in", tokenScript.expiresIn)
            .encodeIfPresent("scope", tokenScript.scope)
            .encode("token_type", std::string("Bearer"));
        return HttpAnswer{tokenScript.status, answer.result().serialized()};
    });
    http.route("/v1/oauth/token/revoke", HttpAnswer{200, "{}"});
    http.route("/api/oauth/usage", [this](const httplib::Request& request) {
        std::lock_guard lock(mutex);
        if (request.get_header_value("Authorization") != "Bearer " + tokenScript.accessToken) {
            return HttpAnswer{401, R"({"error":"unauthorized"})"};
        }
        return usage;
    });
}

ClaudeEndpoints FakeClaudeService::endpoints() const {
    const auto base = http.baseURL();
    return ClaudeEndpoints::make(base, base, base).value();
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
