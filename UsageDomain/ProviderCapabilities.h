#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>

namespace gaugewell {

struct CapabilityInsertResult;

// A set of capability flags over a 16-bit raw value. Bits without a named flag are kept as they are.
class ProviderCapabilities {
public:
    using RawValue = std::uint16_t;

    static const ProviderCapabilities currentWindows;
    static const ProviderCapabilities resetTimes;
    static const ProviderCapabilities accountTokenHistory;
    static const ProviderCapabilities deviceTokenHistory;
    static const ProviderCapabilities modelBreakdown;
    static const ProviderCapabilities credits;
    static const ProviderCapabilities spend;
    static const ProviderCapabilities apiBilling;

    constexpr ProviderCapabilities() = default;
    explicit constexpr ProviderCapabilities(RawValue rawValue)
        : raw(rawValue) {}
    constexpr ProviderCapabilities(std::initializer_list<ProviderCapabilities> flags) {
        for (auto flag : flags) {
            raw = static_cast<RawValue>(raw | flag.raw);
        }
    }

    constexpr RawValue rawValue() const { return raw; }
    constexpr bool isEmpty() const { return raw == 0; }

    constexpr ProviderCapabilities unionWith(ProviderCapabilities other) const {
        return ProviderCapabilities(static_cast<RawValue>(raw | other.raw));
    }
    constexpr ProviderCapabilities intersection(ProviderCapabilities other) const {
        return ProviderCapabilities(static_cast<RawValue>(raw & other.raw));
    }
    constexpr ProviderCapabilities symmetricDifference(ProviderCapabilities other) const {
        return ProviderCapabilities(static_cast<RawValue>(raw ^ other.raw));
    }
    constexpr ProviderCapabilities subtracting(ProviderCapabilities other) const {
        return ProviderCapabilities(static_cast<RawValue>(raw & ~other.raw));
    }

    // True when every flag of `member` is in the set.
    constexpr bool contains(ProviderCapabilities member) const { return (raw & member.raw) == member.raw; }
    constexpr bool isSubset(ProviderCapabilities of) const { return (raw & ~of.raw) == 0; }
    constexpr bool isSuperset(ProviderCapabilities of) const { return of.isSubset(*this); }
    constexpr bool isDisjoint(ProviderCapabilities with) const { return (raw & with.raw) == 0; }

    // Reports whether the member was newly added; an already present member leaves the set unchanged.
    CapabilityInsertResult insert(ProviderCapabilities member);
    // The removed member, or absent when it was not (wholly) in the set.
    std::optional<ProviderCapabilities> remove(ProviderCapabilities member);

    constexpr bool operator==(const ProviderCapabilities&) const = default;

private:
    RawValue raw = 0;
};

inline constexpr ProviderCapabilities ProviderCapabilities::currentWindows(RawValue{1});
inline constexpr ProviderCapabilities ProviderCapabilities::resetTimes(RawValue{2});
inline constexpr ProviderCapabilities ProviderCapabilities::accountTokenHistory(RawValue{4});
inline constexpr ProviderCapabilities ProviderCapabilities::deviceTokenHistory(RawValue{8});
inline constexpr ProviderCapabilities ProviderCapabilities::modelBreakdown(RawValue{16});
inline constexpr ProviderCapabilities ProviderCapabilities::credits(RawValue{32});
inline constexpr ProviderCapabilities ProviderCapabilities::spend(RawValue{64});
inline constexpr ProviderCapabilities ProviderCapabilities::apiBilling(RawValue{128});

struct CapabilityInsertResult {
    bool inserted;
    ProviderCapabilities memberAfterInsert;
};

inline CapabilityInsertResult ProviderCapabilities::insert(ProviderCapabilities member) {
    if (contains(member)) {
        return {false, member};
    }
    raw = static_cast<RawValue>(raw | member.raw);
    return {true, member};
}

inline std::optional<ProviderCapabilities> ProviderCapabilities::remove(ProviderCapabilities member) {
    const ProviderCapabilities present = intersection(member);
    raw = static_cast<RawValue>(raw & ~member.raw);
    if (present.isEmpty()) {
        return std::nullopt;
    }
    return present;
}

} // namespace gaugewell

template <> struct std::hash<gaugewell::ProviderCapabilities> {
    std::size_t operator()(gaugewell::ProviderCapabilities value) const noexcept {
        return std::hash<std::uint16_t>{}(value.rawValue());
    }
};
