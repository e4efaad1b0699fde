#pragma once
// Loopback sockets for transport tests: a listener on an ephemeral port, one request read whole,
// and a server thread whose every connection is handed to the test.
#include <QString>

#include <arpa/inet.h>
#include <atomic>
#include <functional>
#include <netinet/in.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace orvan::test {

inline int listenOnLoopback(int& port) {
    int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 || ::listen(fd, 8) != 0) return -1;
    socklen_t length = sizeof address;
    ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length);
    port = ntohs(address.sin_port);
    return fd;
}

// Reads one request head and its announced body; answers the head's text ("" when the peer left).
inline std::string readRequest(int fd) {
    std::string raw;
    char buffer[4096];
    while (true) {
        auto end = raw.find("\r\n\r\n");
        if (end != std::string::npos) {
            auto at = raw.find("Content-Length: ");
            std::size_t length = at == std::string::npos ? 0 : std::stoul(raw.substr(at + 16));
            if (raw.size() >= end + 4 + length) return raw;
        }
        ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n <= 0) return {};
        raw.append(buffer, static_cast<std::size_t>(n));
    }
}

inline void writeAll(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        ssize_t n = ::send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (n <= 0) return;
        bytes.remove_prefix(static_cast<std::size_t>(n));
    }
}

// A server on a thread: every accepted connection is handed to `serve`, which may read any number
// of requests from it. It counts the requests that reached it.
class RawServer {
public:
    using Serve = std::function<void(RawServer&, int fd)>;
    explicit RawServer(Serve serve) : serve_(std::move(serve)) {
        listener_ = listenOnLoopback(port_);
        thread_ = std::thread([this] {
            while (true) {
                int fd = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
                if (fd < 0 || stopping_) {
                    if (fd >= 0) ::close(fd);
                    return;
                }
                serve_(*this, fd);
                ::close(fd);
            }
        });
    }
    ~RawServer() {
        stopping_ = true;
        ::shutdown(listener_, SHUT_RDWR);
        thread_.join();
        ::close(listener_);
    }
    std::string next(int fd) {
        std::string request = readRequest(fd);
        if (!request.empty()) ++requests;
        return request;
    }
    QString base() const { return QString("http://127.0.0.1:%1").arg(port_); }

    std::atomic<int> requests{0};

private:
    Serve serve_;
    int listener_ = -1;
    int port_ = 0;
    std::atomic<bool> stopping_{false};
    std::thread thread_;
};

} // namespace orvan::test
