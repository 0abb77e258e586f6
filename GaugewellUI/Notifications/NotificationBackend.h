#pragma once

#include <QFuture>
#include <optional>
#include <string>

namespace gaugewell {

// What the desktop's notification service allows this application.
enum class NotificationAuthorization { unavailable, notDetermined, denied, authorized };

enum class NotificationPostError {
    unavailable, // no notification service to deliver to
    rejected,    // the service refused the request
    timedOut,    // no answer within the call's deadline
};

// One notification for immediate delivery with the default sound.
struct NotificationRequest {
    std::string identifier; // ours, for bookkeeping; the service may assign its own
    std::string title;
    std::string body;

    bool operator==(const NotificationRequest&) const = default;
};

// The desktop notification service. Operations are asynchronous: they never block the calling
// thread, and every returned future finishes (with a result) within a bounded time.
class NotificationBackend {
public:
    virtual ~NotificationBackend() = default;

    virtual QFuture<NotificationAuthorization> authorization() = 0;
    // Asks for permission to post alerts with sound; answers the authorization afterwards.
    virtual QFuture<NotificationAuthorization> requestAuthorization() = 0;
    // Absent error: delivered to the service.
    virtual QFuture<std::optional<NotificationPostError>> post(NotificationRequest request) = 0;
};

} // namespace gaugewell
