#pragma once

#include <string_view>
#include <variant>

namespace gaugewell {

// The feed answered, but not with status 200 of a well-formed HTTP response.
enum class WidgetUsageLoaderError { invalidResponse };

// The body was not a snapshot.
enum class WidgetSnapshotDecodingError { malformedJSON, missingKey, wrongType, unknownValue };

// No answer at all.
enum class WidgetTransportError { cannotConnect, timedOut, connectionFailed };

using WidgetFetchError =
    std::variant<WidgetUsageLoaderError, WidgetSnapshotDecodingError, WidgetTransportError>;

// The one place where these errors become sentences.
std::string_view describe(const WidgetFetchError& error);

} // namespace gaugewell
