#include "Sha256.h"

#include <cstdlib>
#include <openssl/evp.h>

namespace gaugewell {

Sha256::Digest Sha256::digest(std::span<const std::byte> data) {
    Digest result{};
    unsigned int length = 0;
    if (EVP_Digest(data.data(), data.size(), reinterpret_cast<unsigned char*>(result.data()), &length,
                   EVP_sha256(), nullptr) != 1 ||
        length != result.size()) {
        // Only an allocation failure inside OpenSSL gets here; a wrong digest would be worse than stopping.
        std::abort();
    }
    return result;
}

Sha256::Digest Sha256::digest(std::string_view text) {
    return digest(std::as_bytes(std::span(text.data(), text.size())));
}

} // namespace gaugewell
