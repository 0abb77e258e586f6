#pragma once

#include "GaugewellWidgetSupport/WidgetFeedEndpoint.h"
#include "GaugewellWidgetSupport/WidgetUsageSnapshot.h"

#include <QObject>
#include <QPointer>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>

class QSocketNotifier;

namespace gaugewell {

// Why the feed is not listening. The server itself stays silent about it; the CLI and the
// diagnostics can ask.
enum class WidgetLiveServerError { addressInUse, listenFailed };

// The one place where these become sentences.
std::string_view describe(WidgetLiveServerError error);

enum class WidgetFeedStatus { ok, notFound, internalServerError };

// The complete response: head and body.
std::string widgetFeedResponse(WidgetFeedStatus status, std::string_view body = {});

// Whether the first chunk a client sent asks for the snapshot: valid UTF-8 that begins with
// "GET /widget/v1 " exactly. Nothing after it (the rest of the line, the headers) matters.
bool isWidgetFeedRequest(std::string_view firstChunk);

struct WidgetLiveServerOptions {
    std::uint16_t port = WidgetFeedEndpoint::defaultPort;
    // Beyond the feed's own rules, so that a local program cannot pin the service: a connection that
    // has not sent its first bytes within this time is closed, and so is one whose response has not
    // drained within it. The wait for the snapshot is not bounded here: it lasts as long as the refresh,
    // whose collections have their own deadlines, and the connection keeps its slot until then even if
    // the client has gone (nothing after the first chunk is read, so nothing notices).
    std::chrono::milliseconds idleTimeout{5000};
    // At most this many connections are served at once; a burst beyond it waits in the listen backlog
    // (1024; accepting pauses meanwhile) and is served in turn. An accept that fails for want of
    // descriptors is retried after a moment instead of ending the feed.
    std::size_t maximumConnections = 64;

    // The defaults, with the port from GAUGEWELL_WIDGET_PORT when that holds a valid port number.
    static WidgetLiveServerOptions fromEnvironment();
};

// Publishes the current snapshot to the desktop widget: HTTP on 127.0.0.1 only, one request per
// connection, every connection closed after its single response. Lives on the main thread, like the
// model it serves; nothing in it blocks.
class WidgetLiveServer : public QObject {
    Q_OBJECT

public:
    // Called once with the snapshot, or with nothing when there is none to give (answered with 500).
    // Must be called on the server's thread, at once or later; calling it after the client or the
    // server has gone is harmless.
    using SnapshotReply = std::function<void(std::optional<WidgetUsageSnapshot>)>;
    using SnapshotSource = std::function<void(SnapshotReply)>;

    explicit WidgetLiveServer(SnapshotSource source,
                              WidgetLiveServerOptions options = WidgetLiveServerOptions::fromEnvironment(),
                              QObject* parent = nullptr);
    ~WidgetLiveServer() override;

    // Begins listening; does nothing while listening. A port that is taken leaves the server
    // silently not listening (see `lastError()`); a later call tries again.
    void start();
    // Closes the listener. Connections already accepted still get their single response.
    void stop();

    bool isListening() const;
    std::optional<WidgetLiveServerError> lastError() const { return lastError_; }
    std::uint16_t port() const { return options.port; }
    std::size_t openConnectionCount() const { return connections.size(); }

private:
    class Connection;

    void acceptWaiting();
    void resumeAccepting();
    void serve(int descriptor);
    void receive(Connection* connection, std::string_view firstChunk);

    SnapshotSource source;
    WidgetLiveServerOptions options;
    int listenerDescriptor = -1;
    QSocketNotifier* listener = nullptr; // present while listening
    std::optional<WidgetLiveServerError> lastError_;
    std::unordered_set<Connection*> connections;
};

} // namespace gaugewell
