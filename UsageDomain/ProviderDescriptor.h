#pragma once

#include "Hashing.h"

#include <optional>
#include <string>

namespace gaugewell {

// The identity of a provider; `id` is its key everywhere (backoff, outcomes, skipped lists).
class ProviderDescriptor {
public:
    ProviderDescriptor(std::string id, std::string displayName, std::optional<std::string> integrationNotice)
        : id_(std::move(id))
        , displayName_(std::move(displayName))
        , integrationNotice_(std::move(integrationNotice)) {}

    const std::string& id() const { return id_; }
    const std::string& displayName() const { return displayName_; }
    const std::optional<std::string>& integrationNotice() const { return integrationNotice_; }

    bool operator==(const ProviderDescriptor&) const = default;
    std::size_t hashValue() const {
        return HashBuilder().combine(id_).combine(displayName_).combine(integrationNotice_).result();
    }

private:
    std::string id_;
    std::string displayName_;
    std::optional<std::string> integrationNotice_;
};

} // namespace gaugewell

template <> struct std::hash<gaugewell::ProviderDescriptor> {
    std::size_t operator()(const gaugewell::ProviderDescriptor& value) const noexcept {
        return value.hashValue();
    }
};
