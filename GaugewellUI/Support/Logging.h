#pragma once

#include "UsageDomain/RawValue.h"

#include <QLoggingCategory>
#include <QString>

// What Gaugewell is doing, for a developer who asks: off by default, turned on with for example
// QT_LOGGING_RULES="gaugewell.*.debug=true". Only triggers, durations, enumeration names,
// diagnostic codes and ports: never a token, a payload, a path or an account.
Q_DECLARE_LOGGING_CATEGORY(refreshLog)
Q_DECLARE_LOGGING_CATEGORY(diagnosticsLog)
Q_DECLARE_LOGGING_CATEGORY(widgetFeedLog)
Q_DECLARE_LOGGING_CATEGORY(signInLog)

namespace gaugewell {

template <RawRepresentable E> QString logName(E value) {
    const auto name = rawValue(value);
    return QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
}

} // namespace gaugewell
