#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>

namespace gaugewell {

// Folds field hashes in order, so that records hash over every field as they compare.
class HashBuilder {
public:
    template <class T> HashBuilder& combine(const T& value) {
        mix(std::hash<T>{}(value));
        return *this;
    }
    template <class Clock, class Duration>
    HashBuilder& combine(const std::chrono::time_point<Clock, Duration>& value) {
        mix(std::hash<typename Duration::rep>{}(value.time_since_epoch().count()));
        return *this;
    }
    template <class T> HashBuilder& combine(const std::optional<T>& value) {
        if (value) {
            mix(1);
            combine(*value);
        } else {
            mix(0);
        }
        return *this;
    }
    std::size_t result() const { return state; }

private:
    void mix(std::size_t h) { state ^= h + 0x9e3779b97f4a7c15ULL + (state << 6) + (state >> 2); }
    std::size_t state = 0xcbf29ce484222325ULL;
};

} // namespace gaugewell
