#pragma once

#include <cassert>
#include <utility>
#include <variant>

namespace gaugewell {

// A value or an error; the widget module's own, since it links nothing else of ours.
template <class T, class E> class WidgetResult {
public:
    WidgetResult(T value)
        : storage(std::in_place_index<0>, std::move(value)) {}
    WidgetResult(E error)
        : storage(std::in_place_index<1>, std::move(error)) {}

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

} // namespace gaugewell
