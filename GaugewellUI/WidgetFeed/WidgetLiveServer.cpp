#include "WidgetLiveServer.h"

#include "GaugewellUI/Support/Logging.h"
#include "GaugewellWidgetSupport/WidgetFeedEndpoint.h"

#include <QByteArrayView>
#include <QHostAddress>
#include <QSocketNotifier>
#include <QTcpServer>
#include <QThread>
#include <QTimer>
#include <cerrno>
#include <fcntl.h>
#include <memory>
#include <sys/socket.h>
#include <unistd.h>

namespace gaugewell {

namespace {

constexpr std::string_view requestPrefix = "GET /widget/v1 ";
// A client gets one look: the first chunk, at most this long.
constexpr std::size_t maximumReceive = 4096;
// A listener that ran out of descriptors stops accepting; this is when it tries again.
constexpr std::chrono::milliseconds acceptRetryDelay{250};
// Bursts beyond the connection cap wait in the kernel until a slot frees; with a short backlog the
// kernel would drop handshakes instead and leave clients with connections nobody answers.
constexpr int listenBacklog = 1024;

// Hands accepted descriptors over as they are, without a QTcpSocket: that one reads ahead, takes a
// client's half-close for the end of the connection, and buffers what it is never asked for.
class DescriptorListener : public QTcpServer {
public:
    DescriptorListener(std::function<void(int)> accept, QObject* parent)
        : QTcpServer(parent)
        , acceptDescriptor(std::move(accept)) {}

protected:
    void incomingConnection(qintptr descriptor) override { acceptDescriptor(static_cast<int>(descriptor)); }

private:
    std::function<void(int)> acceptDescriptor;
};

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
    options.port = WidgetFeedEndpoint::fromEnvironment().port;
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
    for (const int descriptor : waiting) {
        ::close(descriptor);
    }
    waiting.clear();
    delete listener;
}

bool WidgetLiveServer::isListening() const {
    return listener != nullptr && listener->isListening();
}

void WidgetLiveServer::start() {
    if (isListening()) {
        return;
    }
    delete listener;
    auto* server = new DescriptorListener([this](int descriptor) { accept(descriptor); }, this);
    server->setListenBacklogSize(listenBacklog);
    // Only the loopback address, so that nothing listens on other interfaces. Qt sets SO_REUSEADDR on
    // the listening socket and accepts with close-on-exec.
    if (!server->listen(QHostAddress::LocalHost, options.port)) {
        lastError_ = server->serverError() == QAbstractSocket::AddressInUseError
                         ? WidgetLiveServerError::addressInUse
                         : WidgetLiveServerError::listenFailed;
        qCInfo(widgetFeedLog).noquote() << "not listening:" << describe(*lastError_).data();
        delete server;
        return;
    }
    lastError_.reset();
    listener = server;
    qCDebug(widgetFeedLog).noquote() << "listening on 127.0.0.1 port" << server->serverPort();
    // Out of descriptors, Qt pauses accepting for good; waiting clients stay in the backlog until the retry.
    connect(server, &QTcpServer::acceptError, this, [server](QAbstractSocket::SocketError) {
        QTimer::singleShot(acceptRetryDelay, server, [server] { server->resumeAccepting(); });
    });
}

void WidgetLiveServer::stop() {
    if (listener != nullptr) {
        qCDebug(widgetFeedLog).noquote() << "stopped listening";
        listener->close();
        listener->deleteLater();
        listener = nullptr;
    }
}

void WidgetLiveServer::accept(int descriptor) {
    const int flags = ::fcntl(descriptor, F_GETFL);
    if (flags < 0 || ::fcntl(descriptor, F_SETFL, flags | O_NONBLOCK) != 0) {
        ::close(descriptor);
        return;
    }
    if (connections.size() >= options.maximumConnections) {
        // Qt drains the whole backlog in one go, pause or not: the excess waits here, bounded.
        if (waiting.size() >= options.maximumWaiting) {
            qCDebug(widgetFeedLog).noquote() << "connection refused: the waiting list is full";
            ::close(descriptor);
        } else {
            waiting.push_back(descriptor);
        }
        if (listener != nullptr) {
            listener->pauseAccepting(); // the rest stays in the kernel's backlog
        }
        return;
    }
    serve(descriptor);
}

void WidgetLiveServer::serve(int descriptor) {
    auto* connection = new Connection(descriptor, options.idleTimeout, this);
    connections.insert(connection);
    connect(connection, &QObject::destroyed, this, [this, connection] {
        connections.erase(connection);
        while (connections.size() < options.maximumConnections && !waiting.empty()) {
            const int next = waiting.front();
            waiting.pop_front();
            serve(next);
        }
        if (listener != nullptr && connections.size() < options.maximumConnections && waiting.empty()) {
            listener->resumeAccepting();
        }
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
