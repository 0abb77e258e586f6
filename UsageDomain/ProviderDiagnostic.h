#pragma once

#include "Hashing.h"
#include "ProviderEnumerations.h"

#include <string>

namespace gaugewell {

// One finding of a probe or collection: a stable dotted code and a fixed sentence for the user.
class ProviderDiagnostic {
public:
    ProviderDiagnostic(DiagnosticSeverity severity, std::string code, std::string message)
        : severity_(severity)
        , code_(std::move(code))
        , message_(std::move(message)) {}

    DiagnosticSeverity severity() const { return severity_; }
    const std::string& code() const { return code_; }
    const std::string& message() const { return message_; }

    bool operator==(const ProviderDiagnostic&) const = default;
    std::size_t hashValue() const {
        return HashBuilder().combine(severity_).combine(code_).combine(message_).result();
    }

private:
    DiagnosticSeverity severity_;
    std::string code_;
    std::string message_;
};

} // namespace gaugewell

template <> struct std::hash<gaugewell::ProviderDiagnostic> {
    std::size_t operator()(const gaugewell::ProviderDiagnostic& value) const noexcept {
        return value.hashValue();
    }
};
