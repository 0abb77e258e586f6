#include "Platform/SecureWipe.h"

#include <openssl/crypto.h>

namespace gaugewell {

void secureWipe(std::span<std::byte> bytes) {
    if (!bytes.empty()) {
        OPENSSL_cleanse(bytes.data(), bytes.size());
    }
}

void secureWipe(std::string& text) {
    // The whole capacity: earlier, longer contents may still sit past size().
    text.resize(text.capacity());
    secureWipe(std::as_writable_bytes(std::span(text.data(), text.size())));
    text.clear();
}

} // namespace gaugewell
