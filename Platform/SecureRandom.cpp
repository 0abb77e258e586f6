#include "SecureRandom.h"

#include <cerrno>
#include <cstdlib>
#include <sys/random.h>

namespace gaugewell {

bool SecureRandom::fill(std::span<std::byte> buffer) {
    std::size_t filled = 0;
    while (filled < buffer.size()) {
        const ssize_t count = getrandom(buffer.data() + filled, buffer.size() - filled, 0);
        if (count < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        filled += static_cast<std::size_t>(count);
    }
    return true;
}

std::vector<std::byte> SecureRandom::bytes(std::size_t count) {
    std::vector<std::byte> result(count);
    if (!fill(result)) {
        std::abort(); // without randomness no secret can be made safely
    }
    return result;
}

} // namespace gaugewell
