#include "platform/linux/QtLocalApi.h"

#include "platform/linux/HttpReader.h"
#include "platform/linux/PortOwner.h"

#include <QHostAddress>
#include <QTcpSocket>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace orvan {

namespace {

// Idle connections kept for the next requests. The status poll and the sections' polls meet on the
// same coarse seconds and need one each; keeping fewer opened and closed a connection at every
// meeting, each with its handshake and its owner check.
constexpr std::size_t keptConnections = 4;
const char* const checkedProperty = "orvan.ownerChecked";

bool token(std::string_view name) {
    if (name.empty()) return false;
    for (char c : name)
        if (c <= ' ' || c >= 0x7f || std::strchr("()<>@,;:\\\"/[]?={}", c)) return false;
    return true;
}

bool fieldValue(std::string_view value) {
    for (char c : value)
        if (c == '\r' || c == '\n' || c == '\0') return false;
    return true;
}

bool target(std::string_view path) {
    if (path.empty() || path.front() != '/') return false;
    for (char c : path)
        if (c <= ' ' || c >= 0x7f || c == '#') return false;
    return true;
}

// A connection the server has closed (or written to unasked) while it sat idle is not used again.
bool stillOpen(QTcpSocket& socket) {
    if (socket.state() != QAbstractSocket::ConnectedState || socket.bytesAvailable() > 0) return false;
    char byte;
    ssize_t n = ::recv(static_cast<int>(socket.socketDescriptor()), &byte, 1, MSG_PEEK | MSG_DONTWAIT);
    return n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK);
}

PortOwner::Endpoint endpointOf(const QHostAddress& address, quint16 port) {
    PortOwner::Endpoint e;
    Q_IPV6ADDR bytes = address.toIPv6Address();
    std::memcpy(e.address.data(), &bytes, 16);
    e.port = port;
    return e;
}

bool ownedByUs(QTcpSocket& socket) {
    if (socket.property(checkedProperty).toBool()) return true;
    auto uid = PortOwner::of(endpointOf(socket.peerAddress(), socket.peerPort()),
                             endpointOf(socket.localAddress(), socket.localPort()));
    bool ours = uid && *uid == ::getuid();
    socket.setProperty(checkedProperty, ours);
    return ours;
}

std::string wire(const HttpRequest& request, const std::string& host) {
    std::string out = request.method + " " + request.path + " HTTP/1.1\r\nHost: " + host +
                      "\r\nAccept-Encoding: identity\r\n";
    for (const auto& [name, value] : request.headers) out += name + ": " + value + "\r\n";
    if (request.body || request.method != "GET") out += "Content-Length: " + std::to_string(request.body ? request.body->size() : 0) + "\r\n";
    out += "\r\n";
    if (request.body) out += *request.body;
    return out;
}

std::string socketFailure(const QTcpSocket& socket) {
    switch (socket.error()) {
    case QAbstractSocket::ConnectionRefusedError: return "Nothing is listening on the bridge's port.";
    case QAbstractSocket::RemoteHostClosedError: return "The bridge closed the connection without answering.";
    default: {
        std::string words = socket.errorString().toStdString();
        return words.empty() ? "No answer." : words;
    }
    }
}

struct Closer {
    void operator()(QTcpSocket* socket) const {
        if (!socket) return;
        QObject::disconnect(socket, nullptr, nullptr, nullptr);
        socket->abort();
        socket->deleteLater();
    }
};
using Socket = std::unique_ptr<QTcpSocket, Closer>;

} // namespace

struct QtLocalApi::Pool {
    QHostAddress host;
    quint16 port = 0;
    std::string hostHeader;
    bool valid = false;
    bool closed = false;
    std::vector<Socket> idle;

    Socket take() {
        while (!idle.empty()) {
            Socket socket = std::move(idle.back());
            idle.pop_back();
            QObject::disconnect(socket.get(), nullptr, nullptr, nullptr);
            if (stillOpen(*socket)) return socket;
        }
        return nullptr;
    }

    void keep(Socket socket) {
        if (closed || idle.size() >= keptConnections || !stillOpen(*socket)) return;
        QTcpSocket* raw = socket.get();
        // Closed by the server while idle: let it go at once rather than at the next request.
        auto drop = [this, raw] {
            auto it = std::find_if(idle.begin(), idle.end(), [raw](const Socket& s) { return s.get() == raw; });
            if (it != idle.end()) idle.erase(it);
        };
        QObject::connect(raw, &QAbstractSocket::disconnected, raw, drop, Qt::QueuedConnection);
        QObject::connect(raw, &QIODevice::readyRead, raw, drop, Qt::QueuedConnection);
        idle.push_back(std::move(socket));
    }
};

QtLocalApi::QtLocalApi(QString baseAddress) : pool_(std::make_shared<Pool>()) {
    QUrl base(baseAddress, QUrl::StrictMode);
    pool_->valid = base.isValid() && base.scheme() == "http" && pool_->host.setAddress(base.host()) && base.port() > 0 &&
                   base.path().isEmpty();
    pool_->port = static_cast<quint16>(base.port());
    pool_->hostHeader = base.authority().toStdString();
}

QtLocalApi::~QtLocalApi() {
    pool_->closed = true;
    pool_->idle.clear();
}

Task<HttpAnswer> QtLocalApi::send(HttpRequest request) {
    std::shared_ptr<Pool> pool = pool_;
    bool wellFormed = pool->valid && target(request.path) && token(request.method);
    for (const auto& [name, value] : request.headers) wellFormed = wellFormed && token(name) && fieldValue(value);
    if (!wellFormed) co_return HttpAnswer::transportFailure("The address is not valid.");

    const auto idleFor = std::chrono::duration_cast<std::chrono::milliseconds>(std::max<Duration>(request.timeout, Duration(1)));
    bool timedOut = false;

    Socket socket = pool->take();
    if (!socket) {
        socket.reset(new QTcpSocket);
        // Qt would otherwise keep whatever arrives; the reader takes it in pieces and caps the whole.
        socket->setReadBufferSize(256 * 1024);
        auto wake = std::make_shared<Wakeup>();
        QObject phase;
        QTimer idle;
        idle.setSingleShot(true);
        QObject::connect(socket.get(), &QAbstractSocket::connected, &phase, [wake] { wake->fire(true); });
        QObject::connect(socket.get(), &QAbstractSocket::errorOccurred, &phase, [wake] { wake->fire(false); });
        QObject::connect(&idle, &QTimer::timeout, &phase, [wake, &timedOut] {
            timedOut = true;
            wake->fire(false);
        });
        idle.start(idleFor);
        socket->connectToHost(pool->host, pool->port);
        bool connected = co_await *wake;
        if (!connected)
            co_return HttpAnswer::transportFailure(timedOut ? "The request timed out." : socketFailure(*socket));
        socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    }

    if (request.ownListenerOnly && !ownedByUs(*socket))
        co_return HttpAnswer::foreignPort("Another user's program is listening on the bridge's port; "
                                          "the key was not sent to it.");

    HttpReader reader(answerCap, request.method == "HEAD");
    std::optional<std::string> failure;
    {
        auto wake = std::make_shared<Wakeup>();
        QObject phase;
        QTimer idle;
        idle.setSingleShot(true);
        QTcpSocket* s = socket.get();
        auto drain = [s, &reader] {
            char buffer[65536];
            while (reader.state() == HttpReader::State::Reading) {
                qint64 n = s->read(buffer, sizeof buffer);
                if (n <= 0) break;
                reader.feed(std::string_view(buffer, static_cast<std::size_t>(n)));
            }
        };
        QObject::connect(s, &QIODevice::readyRead, &phase, [&, wake] {
            idle.start(idleFor);
            drain();
            if (reader.state() != HttpReader::State::Reading) wake->fire(true);
        });
        QObject::connect(s, &QIODevice::bytesWritten, &phase, [&] { idle.start(idleFor); });
        QObject::connect(s, &QAbstractSocket::errorOccurred, &phase, [&, wake](QAbstractSocket::SocketError error) {
            drain();
            if (error == QAbstractSocket::RemoteHostClosedError) reader.closed();
            else if (reader.state() == HttpReader::State::Reading) failure = socketFailure(*s);
            wake->fire(true);
        });
        QObject::connect(s, &QAbstractSocket::disconnected, &phase, [&, wake] {
            drain();
            reader.closed();
            wake->fire(true);
        });
        QObject::connect(&idle, &QTimer::timeout, &phase, [&, wake] {
            timedOut = true;
            wake->fire(false);
        });
        idle.start(idleFor);
        std::string bytes = wire(request, pool->hostHeader);
        s->write(bytes.data(), static_cast<qint64>(bytes.size()));
        co_await *wake;
    }

    // Sent once, whatever happened: the caller decides what a failure means, and a write is never
    // applied twice by us.
    if (timedOut) co_return HttpAnswer::transportFailure("The request timed out.");
    if (reader.state() == HttpReader::State::Done) {
        HttpAnswer answer = HttpAnswer::http(reader.status(), reader.body());
        if (reader.reusable()) pool->keep(std::move(socket));
        co_return answer;
    }
    if (failure) co_return HttpAnswer::transportFailure(*failure);
    co_return HttpAnswer::transportFailure(reader.state() == HttpReader::State::Failed ? reader.failure()
                                                                                       : "No answer.");
}

} // namespace orvan
