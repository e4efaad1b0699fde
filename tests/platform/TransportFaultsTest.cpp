// The transport against servers that misbehave at the socket level: they close, reset, answer
// with something that isn't HTTP, never stop, or belong to another user.
#include "bridge/LocalRequest.h"
#include "platform/linux/HttpReader.h"
#include "platform/linux/PortOwner.h"
#include "platform/linux/QtLocalApi.h"

#include "CoreApp.h"
#include "RawServer.h"

#include <QCoreApplication>
#include <qcoro/qcorotimer.h>
#include <gtest/gtest.h>
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using test::RawServer;
using test::listenOnLoopback;
using test::readRequest;
using test::writeAll;

HttpAnswer sendTo(QtLocalApi& api, HttpRequest request) { return QCoro::waitFor(api.send(std::move(request))); }

HttpRequest post(Duration timeout = 2s) { return LocalRequest::make("/companion/remote", Json{{"on", true}}, timeout, {}); }
HttpRequest get(Duration timeout = 2s) { return LocalRequest::make("/companion/status", std::nullopt, timeout, {}); }

std::string answer(int status, std::string_view body, std::string_view extra = {}) {
    return "HTTP/1.1 " + std::to_string(status) + " X\r\nContent-Type: application/json\r\nContent-Length: " +
           std::to_string(body.size()) + "\r\n" + std::string(extra) + "\r\n" + std::string(body);
}

TEST(TransportFaults, EveryHttpStatusIsAnAnswerWithItsBridgesSentence) {
    test::coreApp();
    int status = 0;
    RawServer server([&](RawServer& s, int fd) {
        while (!s.next(fd).empty()) writeAll(fd, answer(status, R"({"message":"Said by the bridge."})"));
    });
    QtLocalApi api(server.base());
    for (int code : {400, 401, 404, 407, 409, 418, 429, 500, 503}) {
        status = code;
        HttpAnswer a = sendTo(api, post());
        ASSERT_TRUE(a.isHttp()) << code << ": " << a.failure.value_or("");
        EXPECT_EQ(a.status, code);
        EXPECT_EQ(LocalRequest::message(a.body), "Said by the bridge.") << code;
    }
    EXPECT_EQ(server.requests, 9);
}

TEST(TransportFaults, ARequestGoesOutOnceWhateverTheServerDoesWithIt) {
    test::coreApp();
    struct Case {
        const char* what;
        std::function<void(int fd)> after;
    };
    for (const auto& c : std::vector<Case>{
             {"closes", [](int) {}},
             {"resets", [](int fd) {
                  linger hard{1, 0};
                  ::setsockopt(fd, SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
              }},
             {"answers in another protocol", [](int fd) { writeAll(fd, "SSH-2.0-nothing\r\n"); }},
             {"stops half-way", [](int fd) { writeAll(fd, "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n{}"); }},
         }) {
        for (bool isPost : {true, false}) {
            RawServer server([&](RawServer& s, int fd) {
                if (!s.next(fd).empty()) c.after(fd);
            });
            QtLocalApi api(server.base());
            HttpAnswer a = sendTo(api, isPost ? post() : get());
            EXPECT_TRUE(a.failure) << c.what;
            EXPECT_FALSE(a.foreignListener);
            std::this_thread::sleep_for(100ms); // a second attempt would arrive within this
            EXPECT_EQ(server.requests, 1) << c.what << (isPost ? " (POST)" : " (GET)");
        }
    }
}

TEST(TransportFaults, AKeptConnectionTheServerClosedIsNotUsedAgain) {
    test::coreApp();
    RawServer server([](RawServer& s, int fd) {
        if (!s.next(fd).empty()) writeAll(fd, answer(200, "{}")); // kept alive by its words, then closed
    });
    QtLocalApi api(server.base());
    for (int i = 0; i < 3; ++i) {
        HttpAnswer a = sendTo(api, post());
        ASSERT_TRUE(a.isHttp()) << i << ": " << a.failure.value_or("");
        // Let the close reach us, as it does between two polls.
        QCoro::waitFor(QCoro::sleepFor(50ms));
    }
    EXPECT_EQ(server.requests, 3);
}

TEST(TransportFaults, AnAnswerPastTheCapFailsAndKeepsNothing) {
    test::coreApp();
    std::atomic<bool> endless{true};
    RawServer server([&](RawServer& s, int fd) {
        if (s.next(fd).empty()) return;
        if (!endless) {
            writeAll(fd, "HTTP/1.1 200 OK\r\nContent-Length: 52428800\r\n\r\n{");
            return;
        }
        writeAll(fd, "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n");
        std::string chunk = "10000\r\n" + std::string(0x10000, ' ') + "\r\n";
        for (int i = 0; i < 4096; ++i) { // 256 MiB, far past the cap, unless the reader leaves first
            if (::send(fd, chunk.data(), chunk.size(), MSG_NOSIGNAL) <= 0) return;
        }
    });
    QtLocalApi api(server.base());
    for (bool e : {true, false}) {
        endless = e;
        HttpAnswer a = sendTo(api, get(5s));
        ASSERT_TRUE(a.failure) << (e ? "endless" : "announced");
        EXPECT_EQ(*a.failure, "The answer is larger than the companion accepts.");
        EXPECT_TRUE(a.body.empty());
    }
}

// Another user's program on the port gets no request with the key; /healthz still goes out.
TEST(TransportFaults, AListenerOfAnotherUserGetsNoKey) {
    test::coreApp();
    if (::getuid() != 0) GTEST_SKIP() << "needs root to listen as another user";
    int toParent[2];
    ASSERT_EQ(::pipe(toParent), 0);
    pid_t child = ::fork();
    if (child == 0) {
        if (::setgid(65534) != 0 || ::setuid(65534) != 0) ::_exit(2);
        int port = 0;
        int fd = listenOnLoopback(port);
        (void)!::write(toParent[1], &port, sizeof port);
        // Serves two connections: it reports what each carried.
        for (int i = 0; i < 2; ++i) {
            int c = ::accept(fd, nullptr, nullptr);
            std::string request = readRequest(c);
            char saw = request.empty() ? 'n' : request.find("X-Tulm-Local") != std::string::npos ? 'k' : 'r';
            (void)!::write(toParent[1], &saw, 1);
            if (!request.empty()) writeAll(c, answer(200, "{}"));
            ::close(c);
        }
        ::_exit(0);
    }
    int port = 0;
    ASSERT_EQ(::read(toParent[0], &port, sizeof port), static_cast<ssize_t>(sizeof port));
    QtLocalApi api(QString("http://127.0.0.1:%1").arg(port));

    HttpAnswer keyed = sendTo(api, get());
    EXPECT_TRUE(keyed.foreignListener);
    ASSERT_TRUE(keyed.failure);
    HttpAnswer health = sendTo(api, LocalRequest::health());
    EXPECT_EQ(health.status, 200) << health.failure.value_or("");

    char saw[2] = {};
    ASSERT_EQ(::read(toParent[0], saw, 2), 2);
    EXPECT_EQ(std::string(saw, 2), "nr"); // nothing on the first connection, a keyless probe on the second
    ::waitpid(child, nullptr, 0);
    ::close(toParent[0]);
    ::close(toParent[1]);
}

TEST(PortOwnerTest, TheSocketThatAcceptedUsNamesItsOwner) {
    const char* table =
        "  sl  local_address rem_address   st tx_queue rx_queue tr tm->when retrnsmt   uid  timeout inode\n"
        "   0: 0100007F:2253 00000000:0000 0A 00000000:00000000 00:00000000 00000000  1000        0 1 1\n"
        "   1: 0100007F:2253 0100007F:C350 01 00000000:00000000 00:00000000 00000000  1001        0 2 1\n"
        "   2: 00000000:1F90 00000000:0000 0A 00000000:00000000 00:00000000 00000000    33        0 3 1\n"
        "   3: garbage\n";
    auto at = [](const char* address, int port) { return *PortOwner::endpoint(address, port); };
    struct Case {
        PortOwner::Endpoint server, client;
        std::optional<uid_t> owner;
    };
    for (const auto& c : std::vector<Case>{
             {at("127.0.0.1", 8787), at("127.0.0.1", 50000), 1001}, // the accepted socket, not the listener
             {at("127.0.0.1", 8787), at("127.0.0.1", 50001), 1000}, // not yet listed: the listener
             {at("127.0.0.1", 8080), at("127.0.0.1", 50000), 33},   // a listener on every address
             {at("127.0.0.1", 9999), at("127.0.0.1", 50000), std::nullopt},
         })
        EXPECT_EQ(PortOwner::find(table, false, c.server, c.client), c.owner);

    const char* table6 =
        "  sl  local_address                         remote_address                        st tx_queue rx_queue tr tm->when retrnsmt   uid\n"
        "   0: 0000000000000000FFFF00000100007F:2253 0000000000000000FFFF00000100007F:C350 01 00000000:00000000 00:00000000 00000000   7\n";
    EXPECT_EQ(PortOwner::find(table6, true, at("127.0.0.1", 8787), at("127.0.0.1", 50000)), 7u);
}

// The kernel's own answer for real loopback sockets: the accepted connection, a listener not yet
// connected to, and a port nobody holds, over IPv4 and IPv6.
TEST(PortOwnerTest, TheKernelNamesTheOwnerOfARealSocket) {
    for (int family : {AF_INET, AF_INET6}) {
        const char* loopback = family == AF_INET ? "127.0.0.1" : "::1";
        sockaddr_storage address{};
        socklen_t size = family == AF_INET ? sizeof(sockaddr_in) : sizeof(sockaddr_in6);
        address.ss_family = static_cast<sa_family_t>(family);
        if (family == AF_INET) ::inet_pton(AF_INET, loopback, &reinterpret_cast<sockaddr_in*>(&address)->sin_addr);
        else ::inet_pton(AF_INET6, loopback, &reinterpret_cast<sockaddr_in6*>(&address)->sin6_addr);
        const int listener = ::socket(family, SOCK_STREAM, 0);
        if (::bind(listener, reinterpret_cast<sockaddr*>(&address), size) != 0) {
            ::close(listener);
            ASSERT_EQ(family, AF_INET6) << "IPv4 loopback must bind";
            continue; // a machine without IPv6 loopback
        }
        ASSERT_EQ(::listen(listener, 1), 0);
        ASSERT_EQ(::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size), 0);
        const int port = ntohs(family == AF_INET ? reinterpret_cast<sockaddr_in*>(&address)->sin_port
                                                 : reinterpret_cast<sockaddr_in6*>(&address)->sin6_port);
        const int client = ::socket(family, SOCK_STREAM, 0);
        ASSERT_EQ(::connect(client, reinterpret_cast<sockaddr*>(&address), size), 0);
        sockaddr_storage mine{};
        socklen_t mineSize = sizeof mine;
        ASSERT_EQ(::getsockname(client, reinterpret_cast<sockaddr*>(&mine), &mineSize), 0);
        const int clientPort = ntohs(family == AF_INET ? reinterpret_cast<sockaddr_in*>(&mine)->sin_port
                                                       : reinterpret_cast<sockaddr_in6*>(&mine)->sin6_port);
        auto at = [&](int p) { return *PortOwner::endpoint(loopback, p); };
        auto connected = PortOwner::asked(at(port), at(clientPort));
        EXPECT_TRUE(connected.answered);
        EXPECT_EQ(connected.uid, ::getuid()) << loopback;
        auto listening = PortOwner::asked(at(port), at(clientPort == 65535 ? 1 : clientPort + 1));
        EXPECT_EQ(listening.uid, ::getuid()) << loopback;
        ::close(client);
        ::close(listener);
        auto gone = PortOwner::asked(at(port), at(clientPort + 1));
        EXPECT_TRUE(gone.answered);
        EXPECT_EQ(gone.uid, std::nullopt) << loopback;
    }
}

TEST(HttpReaderTest, AnswersInAnyPiecesReadTheSame) {
    struct Case {
        std::string bytes;
        HttpReader::State state;
        int status;
        std::string body;
        bool reusable;
    };
    const std::vector<Case> cases{
        {"HTTP/1.1 204 No Content\r\n\r\n", HttpReader::State::Done, 204, "", true},
        {"HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}", HttpReader::State::Done, 200, "{}", true},
        {"HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 200 OK\nContent-Length: 1\n\n1", HttpReader::State::Done, 200, "1", true},
        {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2;x=y\r\n[1\r\n1\r\n]\r\n0\r\nT: 1\r\n\r\n",
         HttpReader::State::Done, 200, "[1]", true},
        {"HTTP/1.1 400 Bad\r\nConnection: close\r\nContent-Length: 2\r\n\r\n{}", HttpReader::State::Done, 400, "{}", false},
        {"HTTP/1.0 200 OK\r\n\r\nuntil the end", HttpReader::State::Reading, 200, "", false},
        {"HTTP/1.1 200 OK\r\nContent-Length: 2\r\nContent-Length: 3\r\n\r\n{}", HttpReader::State::Failed, 0, "", false},
        {"HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}extra", HttpReader::State::Failed, 0, "", false},
        {"HTTP/1.1 200 OK\r\nTransfer-Encoding: gzip\r\n\r\n", HttpReader::State::Failed, 0, "", false},
        {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n", HttpReader::State::Failed, 0, "", false},
        {"SSH-2.0-x\r\n", HttpReader::State::Failed, 0, "", false},
        {"HTTP/1.1 2000 OK\r\n\r\n", HttpReader::State::Failed, 0, "", false},
    };
    for (const auto& c : cases) {
        // Whole, and split at every byte: the pieces never change the reading.
        for (std::size_t split = 0; split <= c.bytes.size(); ++split) {
            HttpReader reader(1024);
            reader.feed(std::string_view(c.bytes).substr(0, split));
            reader.feed(std::string_view(c.bytes).substr(split));
            ASSERT_EQ(reader.state(), c.state) << c.bytes << " split at " << split;
            if (c.state == HttpReader::State::Done) {
                EXPECT_EQ(reader.status(), c.status);
                EXPECT_EQ(reader.body(), c.body);
                EXPECT_EQ(reader.reusable(), c.reusable);
            }
        }
    }
    HttpReader untilClose(1024);
    untilClose.feed("HTTP/1.0 200 OK\r\n\r\nuntil the end");
    EXPECT_EQ(untilClose.closed(), HttpReader::State::Done);
    EXPECT_EQ(untilClose.body(), "until the end");
    HttpReader cut(1024);
    cut.feed("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n{}");
    EXPECT_EQ(cut.closed(), HttpReader::State::Failed);
    HttpReader big(4);
    EXPECT_EQ(big.feed("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n3\r\n"), HttpReader::State::Failed);
    EXPECT_TRUE(big.body().empty());
}

} // namespace
} // namespace orvan
