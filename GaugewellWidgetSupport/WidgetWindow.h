#pragma once

#include "WidgetDate.h"

#include <optional>
#include <string>

namespace gaugewell {

// One allowance window as the widget shows it.
class WidgetWindow {
public:
    // The used share is clamped to 0...1 (not a number reads as 0).
    WidgetWindow(std::string id, std::string name, double usedFraction, std::optional<WidgetDate> resetAt);

    const std::string& id() const { return id_; }
    const std::string& name() const { return name_; }
    double usedFraction() const { return usedFraction_; }
    const std::optional<WidgetDate>& resetAt() const { return resetAt_; }

    // {"id":…,"name":…,"usedFraction":…,"resetAt":…}; "resetAt" left out when absent.
    std::string json() const;

    bool operator==(const WidgetWindow&) const = default;

private:
    std::string id_;
    std::string name_;
    double usedFraction_;
    std::optional<WidgetDate> resetAt_;
};

} // namespace gaugewell
