#include "Server.h"

#include <limits>

#include "Control.h"
#include "Routes.h"

#include <arpa/inet.h>
#include <cstdio>
#include <dirent.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sstream>
#include <sys/socket.h>

namespace orvan::sim {

namespace {

constexpr const char* keyHeader = "X-Tulm-Local";

int portOf(const sockaddr_storage& address) {
    if (address.ss_family == AF_INET) return ntohs(reinterpret_cast<const sockaddr_in&>(address).sin_port);
    if (address.ss_family == AF_INET6) return ntohs(reinterpret_cast<const sockaddr_in6&>(address).sin6_port);
    return -1;
}

// The HTTP library gives a handler no socket, so find the connection by its two ports among the
// process's descriptors and shut it: the client then sees the line go dead with no answer at all.
// `remotePort` -1 takes every connection to `localPort`.
void shutConnections(int localPort, int remotePort, int how) {
    DIR* fds = ::opendir("/proc/self/fd");
    if (!fds) return;
    while (dirent* entry = ::readdir(fds)) {
        int fd = std::atoi(entry->d_name);
        if (fd <= 2 || fd == ::dirfd(fds)) continue;
        sockaddr_storage local{}, peer{};
        socklen_t localSize = sizeof local, peerSize = sizeof peer;
        if (::getsockname(fd, reinterpret_cast<sockaddr*>(&local), &localSize) != 0) continue;
        if (::getpeername(fd, reinterpret_cast<sockaddr*>(&peer), &peerSize) != 0) continue;
        if (portOf(local) != localPort || (remotePort >= 0 && portOf(peer) != remotePort)) continue;
        ::shutdown(fd, how);
        if (remotePort >= 0) break;
    }
    ::closedir(fds);
}

void cutConnection(int localPort, int remotePort) { shutConnections(localPort, remotePort, SHUT_RDWR); }

void put(httplib::Response& response, const Reply& reply) {
    response.status = reply.status;
    if (!reply.body.empty() || !reply.contentType.empty())
        response.set_content(reply.body, reply.contentType.empty() ? "text/plain" : reply.contentType.c_str());
}

// A failure body is sent as the test gave it; its type follows from whether it reads as JSON.
Reply failure(int status, const std::string& body) {
    if (body.empty()) return {status, {}, {}};
    bool json = !nlohmann::json::parse(body, nullptr, false).is_discarded();
    return {status, body, json ? "application/json" : "text/plain"};
}

} // namespace

Server::Server(Setup setup) : setup_(std::move(setup)) {
    // The library's default is SO_REUSEPORT, which would let a second bridge share the port and
    // take half the requests; a port in use must fail the start instead, as it does for the bridge.
    //
    // Without TCP_NODELAY a body written after its headers waits for the client's delayed ACK, some
    // 40 ms on every answer. The library sets nothing on the sockets it accepts; on Linux they take
    // the option from the listening socket, which is the one this hook sees.
    http_.set_socket_options([](socket_t socket) {
        int yes = 1;
        ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
    });
    // A slow answer holds its thread for the whole wait, also after the client gave up; a poll every
    // two seconds against a long --slow must not use up the threads that /healthz needs.
    http_.new_task_queue = [] { return new httplib::ThreadPool(64); };
    // A client that polls every two seconds keeps one connection for as long as it runs, as it would
    // with the bridge; the library's default closes it after five requests.
    http_.set_keep_alive_max_count(std::numeric_limits<size_t>::max());
    http_.set_keep_alive_timeout(30);
    auto handler = [this](const httplib::Request& request, httplib::Response& response) {
        {
            std::lock_guard lock(mutex_);
            ++answering_;
        }
        dispatch(request, response);
    };
    // The library logs an exchange once its answer is written: until then stopping must leave the
    // connection readable, or the library takes it for dead and never writes the answer (the one
    // to an exit request above all).
    http_.set_logger([this](const httplib::Request&, const httplib::Response&) {
        {
            std::lock_guard lock(mutex_);
            if (answering_ > 0) --answering_;
        }
        wake_.notify_all();
    });
    // Every method and path comes here, so that unknown ones still get a JSON message.
    http_.Get(".*", handler);
    http_.Post(".*", handler);
    http_.Put(".*", handler);
    http_.Patch(".*", handler);
    http_.Delete(".*", handler);
    http_.Options(".*", handler);
}

int Server::bind(int port) {
    if (port == 0) port_ = http_.bind_to_any_port("127.0.0.1");
    else port_ = http_.bind_to_port("127.0.0.1", port) ? port : -1;
    return port_;
}

bool Server::run() { return http_.listen_after_bind(); }

void Server::stop() {
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_all();
    http_.stop();
    // A kept-alive connection holds its thread, and so the end of the process, until the client
    // sends again or the keep-alive time runs out. Ending its reading side lets the thread see the
    // end at once, once the answers under way are written.
    {
        std::unique_lock lock(mutex_);
        wake_.wait_for(lock, std::chrono::seconds(2), [this] { return answering_ == 0; });
    }
    if (port_ > 0) shutConnections(port_, -1, SHUT_RD);
}

void Server::log(const httplib::Request& request, const std::string& outcome) const {
    if (!setup_.log) return;
    std::fprintf(stderr, "%s %s %s\n", request.method.c_str(), request.path.c_str(), outcome.c_str());
}

void Server::dispatch(const httplib::Request& request, httplib::Response& response) {
    const std::string& path = request.path;
    bool control = Control::owns(path);
    Fault fault;
    {
        std::lock_guard lock(mutex_);
        if (path != "/healthz") {
            // The control paths keep taking the real key, so a test can undo a refusal.
            bool refuse = setup_.sim.misbehaviour.refuseEveryKey && !control;
            if (!request.has_header(keyHeader) || refuse || request.get_header_value(keyHeader) != setup_.key) {
                Reply reply = Reply::message(401, request.has_header(keyHeader)
                                                      ? "The local key does not match this bridge."
                                                      : "This request needs the local key.");
                put(response, reply);
                log(request, "401");
                return;
            }
        }
        if (!control) fault = setup_.sim.misbehaviour.faultFor(path);
    }
    if (fault.slowSeconds > 0) {
        std::ostringstream waiting;
        waiting << "waiting " << fault.slowSeconds << " s";
        log(request, waiting.str());
        std::unique_lock lock(mutex_);
        wake_.wait_for(lock, std::chrono::duration<double>(fault.slowSeconds), [this] { return stopping_; });
    }
    if (fault.drop) {
        cutConnection(request.local_port > 0 ? request.local_port : port_, request.remote_port);
        log(request, "dropped");
        return;
    }
    Reply reply;
    std::optional<int> exitCode;
    if (fault.failStatus) {
        reply = failure(*fault.failStatus, fault.failBody);
    } else if (fault.garbage) {
        reply = {200, "<html><body>Bad gateway {\"on\": tr", "application/json"};
    } else if (fault.wrongType) {
        reply = {200, Routes::wrongShape(path), "application/json"};
    } else {
        std::lock_guard lock(mutex_);
        auto now = std::chrono::system_clock::now();
        Sim& sim = setup_.sim;
        reply = control ? Control::answer(sim, request.method, path, request.body, now)
                        : Routes::answer(sim, request.method, request.target, request.body, now);
        exitCode = sim.exitCode;
    }
    if (reply.delaySeconds > 0) {
        std::unique_lock lock(mutex_);
        wake_.wait_for(lock, std::chrono::duration<double>(reply.delaySeconds), [this] { return stopping_; });
    }
    put(response, reply);
    log(request, std::to_string(reply.status));
    // The answer is written before the server stops: stopping waits for the request threads.
    if (exitCode && setup_.exitRequested) setup_.exitRequested(*exitCode);
}

} // namespace orvan::sim
