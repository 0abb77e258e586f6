#pragma once

#include <cassert>
#include <optional>
#include <utility>
#include <variant>

namespace gaugewell {

template <class E> struct Unexpected { E error; };

template <class E> Unexpected<std::decay_t<E>> unexpected(E&& error) {
    return {std::forward<E>(error)};
}

// A value or an error: what every fallible query returns. std::expected arrives with C++23;
// this is the small part we use. Each error enumeration has its fixed text in one overload of
// `describe`, declared next to the enumeration.
template <class T, class E> class Expected {
public:
    Expected(T value)
        : storage(std::in_place_index<0>, std::move(value)) {}
    template <class G>
    Expected(Unexpected<G> failure)
        : storage(std::in_place_index<1>, E(std::move(failure.error))) {}

    bool hasValue() const { return storage.index() == 0; }
    explicit operator bool() const { return hasValue(); }

    const T& value() const& {
        assert(hasValue());
        return std::get<0>(storage);
    }
    T&& value() && {
        assert(hasValue());
        return std::get<0>(std::move(storage));
    }
    const T& operator*() const& { return value(); }
    const T* operator->() const { return &value(); }

    const E& error() const {
        assert(!hasValue());
        return std::get<1>(storage);
    }

private:
    std::variant<T, E> storage;
};

// Success or an error: what every fallible action returns.
template <class E> class [[nodiscard]] Expected<void, E> {
public:
    Expected() = default;
    template <class G>
    Expected(Unexpected<G> failure)
        : failure(E(std::move(failure.error))) {}

    bool hasValue() const { return !failure.has_value(); }
    explicit operator bool() const { return hasValue(); }

    const E& error() const {
        assert(!hasValue());
        return *failure;
    }

private:
    std::optional<E> failure;
};

template <class E> using Status = Expected<void, E>;

} // namespace gaugewell
