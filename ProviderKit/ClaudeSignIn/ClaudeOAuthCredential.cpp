#include "ProviderKit/ClaudeSignIn/ClaudeOAuthCredential.h"

namespace gaugewell {

JsonValue JsonCoder<ClaudeOAuthCredential>::encode(const ClaudeOAuthCredential& credential) {
    return KeyedEncoder()
        .encode("accessToken", credential.accessToken)
        .encode("refreshToken", credential.refreshToken)
        .encode("expiresAt", credential.expiresAt)
        .encode("scopes", credential.scopes)
        .result();
}

ClaudeOAuthCredential JsonCoder<ClaudeOAuthCredential>::decode(const JsonValue& json,
                                                               const std::string& path) {
    const KeyedDecoder decoder(json, path);
    return ClaudeOAuthCredential{
        decoder.decode<std::string>("accessToken"),
        decoder.decode<std::string>("refreshToken"),
        decoder.decode<Date>("expiresAt"),
        decoder.decode<std::vector<std::string>>("scopes"),
    };
}

} // namespace gaugewell
