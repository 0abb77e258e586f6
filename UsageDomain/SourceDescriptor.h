#pragma once

#include "Hashing.h"

#include <string>

namespace gaugewell {

// Names a source of measurements, such as a local tool's protocol or an account endpoint.
class SourceDescriptor {
public:
    SourceDescriptor(std::string id, std::string displayName, bool isDocumented)
        : id_(std::move(id))
        , displayName_(std::move(displayName))
        , isDocumented_(isDocumented) {}

    const std::string& id() const { return id_; }
    const std::string& displayName() const { return displayName_; }
    bool isDocumented() const { return isDocumented_; }

    bool operator==(const SourceDescriptor&) const = default;
    std::size_t hashValue() const {
        return HashBuilder().combine(id_).combine(displayName_).combine(isDocumented_).result();
    }

private:
    std::string id_;
    std::string displayName_;
    bool isDocumented_;
};

} // namespace gaugewell

template <> struct std::hash<gaugewell::SourceDescriptor> {
    std::size_t operator()(const gaugewell::SourceDescriptor& value) const noexcept {
        return value.hashValue();
    }
};
