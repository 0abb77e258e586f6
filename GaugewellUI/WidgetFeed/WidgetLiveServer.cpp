#include "WidgetLiveServer.h"

#include "GaugewellUI/Support/Logging.h"
#include "GaugewellWidgetSupport/WidgetFeedEndpoint.h"

#include <QByteArrayView>
#include <QSocketNotifier>
#include <QThread>
#include <QTimer>
#include <arpa/inet.h>
#include <cerrno>
#include <memory>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace gaugewell {

namespace {

constexpr std::string_view requestPrefix = "GET /widget/v1 ";
// A client gets one look: the first chunk, at most this long.
constexpr std::size_t maximumReceive = 4096;
// A listener that ran out of descriptors stops accepting; this is when it tries again.
constexpr std::chrono::milliseconds acceptRetryDelay{250};
// Bursts beyond the connection cap wait in the kernel until a slot frees (we stop accepting meanwhile);
// with a short backlog the kernel would drop handshakes instead and leave clients unanswered.
constexpr int listenBacklog = 1024;

// A listening socket on 127.0.0.1 only, so that nothing listens on other interfaces; accepting is
// ours (not QTcpServer's, which accepts the whole backlog at once and wraps each client in a socket
// that reads ahead).
int listenOnLoopback(std::uint16_t port, std::optional<WidgetLiveServerError>& error) {
    const int descriptor = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (descriptor < 0) {
        error = WidgetLiveServerError::listenFailed;
        return -1;
    }
    const int reuse = 1;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse) != 0 ||
        ::bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(descriptor, listenBacklog) != 0) {
        error =
            errno == EADDRINUSE ? WidgetLiveServerError::addressInUse : WidgetLiveServerError::listenFailed;
        ::close(descriptor);
        return -1;
    }
    return descriptor;
}

} // namespace

// One client: a single receive of at most 4096 bytes, a single response, then the close. Reads and
// writes never block; the deadline ends a client that stays silent or does not take its response.
class WidgetLiveServer::Connection : public QObject {
public:
    Connection(int descriptor, std::chrono::milliseconds idleTimeout, WidgetLiveServer* server)
        : QObject(server)
        , descriptor(descriptor)
        , readable(descriptor, QSocketNotifier::Read, this)
        , writable(descriptor, QSocketNotifier::Write, this)
        , deadline(this) {
        writable.setEnabled(false);
        deadline.setSingleShot(true);
        deadline.setInterval(idleTimeout);
        connect(&deadline, &QTimer::timeout, this, &Connection::end);
        connect(&readable, &QSocketNotifier::activated, this, [this, server] {
            char buffer[maximumReceive];
            const ssize_t count = ::recv(this->descriptor, buffer, sizeof buffer, 0);
            if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR)) {
                return;
            }
            // Nothing after this chunk is ever read, a second request included.
            readable.setEnabled(false);
            deadline.stop();
            server->receive(this, std::string_view(buffer, count > 0 ? static_cast<std::size_t>(count) : 0));
        });
        connect(&writable, &QSocketNotifier::activated, this, &Connection::flush);
        deadline.start();
    }

    ~Connection() override { ::close(descriptor); }

    bool isAnswered() const { return answered; }

    void respond(std::string response) {
        answered = true;
        output = std::move(response);
        // Bounds the time a client may take to accept its response.
        deadline.start();
        flush();
    }

private:
    void flush() {
        while (written < output.size()) {
            const ssize_t count = ::send(descriptor, output.data() + written, output.size() - written,
                                         MSG_NOSIGNAL | MSG_DONTWAIT);
            if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
                writable.setEnabled(true);
                return;
            }
            if (count < 0 && errno == EINTR) {
                continue;
            }
            if (count <= 0) {
                break; // the client has gone; the connection ends all the same
            }
            written += static_cast<std::size_t>(count);
        }
        end();
    }

    void end() {
        readable.setEnabled(false);
        writable.setEnabled(false);
        deadline.stop();
        deleteLater();
    }

    int descriptor;
    QSocketNotifier readable;
    QSocketNotifier writable;
    QTimer deadline;
    std::string output;
    std::size_t written = 0;
    bool answered = false;
};

std::string_view describe(WidgetLiveServerError error) {
    switch (error) {
    case WidgetLiveServerError::addressInUse:
        return "The widget feed's port is already in use by another program.";
    case WidgetLiveServerError::listenFailed:
        break;
    }
    return "The widget feed could not listen on the loopback interface.";
}

std::string widgetFeedResponse(WidgetFeedStatus status, std::string_view body) {
    std::string response = "HTTP/1.1 ";
    switch (status) {
    case WidgetFeedStatus::ok:
        response += "200 OK";
        break;
    case WidgetFeedStatus::notFound:
        response += "404 Not Found";
        break;
    case WidgetFeedStatus::internalServerError:
        response += "500 Internal Server Error";
        break;
    }
    response += "\r\nContent-Type: application/json\r\nCache-Control: no-store\r\nContent-Length: ";
    response += std::to_string(body.size());
    response += "\r\nConnection: close\r\n\r\n";
    response += body;
    return response;
}

bool isWidgetFeedRequest(std::string_view firstChunk) {
    return firstChunk.starts_with(requestPrefix) &&
           QByteArrayView(firstChunk.data(), static_cast<qsizetype>(firstChunk.size())).isValidUtf8();
}

WidgetLiveServerOptions WidgetLiveServerOptions::fromEnvironment() {
    WidgetLiveServerOptions options;
    // `gaugewell` refuses an invalid GAUGEWELL_WIDGET_PORT before anything starts.
    options.port = WidgetFeedEndpoint::fromEnvironment().value_or(WidgetFeedEndpoint{}).port;
    return options;
}

WidgetLiveServer::WidgetLiveServer(SnapshotSource source, WidgetLiveServerOptions options, QObject* parent)
    : QObject(parent)
    , source(std::move(source))
    , options(options) {}

WidgetLiveServer::~WidgetLiveServer() {
    // Connections go first, without their handlers, which would otherwise run against a half-destroyed
    // server. Replies still pending find their connection gone and send nothing.
    for (Connection* connection : std::unordered_set<Connection*>(connections)) {
        QObject::disconnect(connection, nullptr, this, nullptr);
        delete connection;
    }
    connections.clear();
    stop();
}

bool WidgetLiveServer::isListening() const {
    return listenerDescriptor >= 0;
}

void WidgetLiveServer::start() {
    if (isListening()) {
        return;
    }
    lastError_.reset();
    listenerDescriptor = listenOnLoopback(options.port, lastError_);
    if (listenerDescriptor < 0) {
        qCInfo(widgetFeedLog).noquote() << "not listening:" << describe(*lastError_).data();
        return;
    }
    qCDebug(widgetFeedLog).noquote() << "listening on 127.0.0.1 port" << options.port;
    listener = new QSocketNotifier(listenerDescriptor, QSocketNotifier::Read, this);
    connect(listener, &QSocketNotifier::activated, this, &WidgetLiveServer::acceptWaiting);
}

void WidgetLiveServer::stop() {
    if (isListening()) {
        qCDebug(widgetFeedLog).noquote() << "stopped listening";
        delete listener;
        ::close(listenerDescriptor);
        listenerDescriptor = -1;
    }
}

void WidgetLiveServer::acceptWaiting() {
    while (connections.size() < options.maximumConnections) {
        const int descriptor = ::accept4(listenerDescriptor, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
        if (descriptor >= 0) {
            serve(descriptor);
        } else if (errno == EINTR || errno == ECONNABORTED) {
            continue;
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            return; // nobody else is waiting
        } else {
            // Out of descriptors or memory: the clients wait in the backlog until the retry.
            listener->setEnabled(false);
            QTimer::singleShot(acceptRetryDelay, listener, [this] { resumeAccepting(); });
            return;
        }
    }
    listener->setEnabled(false); // the rest waits in the kernel's backlog until a slot frees
}

void WidgetLiveServer::resumeAccepting() {
    if (isListening() && connections.size() < options.maximumConnections) {
        listener->setEnabled(true);
    }
}

void WidgetLiveServer::serve(int descriptor) {
    auto* connection = new Connection(descriptor, options.idleTimeout, this);
    connections.insert(connection);
    connect(connection, &QObject::destroyed, this, [this, connection] {
        connections.erase(connection);
        resumeAccepting();
    });
}

void WidgetLiveServer::receive(Connection* connection, std::string_view firstChunk) {
    if (!isWidgetFeedRequest(firstChunk)) {
        connection->respond(widgetFeedResponse(WidgetFeedStatus::notFound));
        return;
    }
    if (!source) {
        connection->respond(widgetFeedResponse(WidgetFeedStatus::internalServerError));
        return;
    }
    source([server = QPointer<WidgetLiveServer>(this),
            client = QPointer<Connection>(connection)](std::optional<WidgetUsageSnapshot> snapshot) {
        Q_ASSERT(server == nullptr || QThread::currentThread() == server->thread());
        if (server == nullptr || client == nullptr || client->isAnswered()) {
            return;
        }
        client->respond(snapshot ? widgetFeedResponse(WidgetFeedStatus::ok, snapshot->json())
                                 : widgetFeedResponse(WidgetFeedStatus::internalServerError));
    });
}

} // namespace gaugewell
