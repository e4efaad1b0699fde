#include "platform/linux/PortOwner.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace orvan::PortOwner {

namespace {

constexpr std::size_t tableCap = 32 * 1024 * 1024;

std::optional<std::uint32_t> hexWord(std::string_view text) {
    if (text.size() != 8) return std::nullopt;
    std::uint32_t n = 0;
    for (char c : text) {
        int d = c >= '0' && c <= '9' ? c - '0' : c >= 'A' && c <= 'F' ? c - 'A' + 10 : c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
        if (d < 0) return std::nullopt;
        n = n << 4 | static_cast<std::uint32_t>(d);
    }
    return n;
}

// The kernel prints each 32-bit word of an address as the number its bytes make in this
// machine's order, and the port as a plain number: "0100007F:2253" is 127.0.0.1:8787 here.
std::optional<Endpoint> parse(std::string_view text, bool ipv6) {
    auto colon = text.find(':');
    if (colon == std::string_view::npos) return std::nullopt;
    std::string_view address = text.substr(0, colon), port = text.substr(colon + 1);
    if (address.size() != (ipv6 ? 32u : 8u) || port.empty() || port.size() > 4) return std::nullopt;
    Endpoint e;
    std::uint8_t bytes[16] = {};
    for (std::size_t word = 0; word < address.size() / 8; ++word) {
        auto value = hexWord(address.substr(word * 8, 8));
        if (!value) return std::nullopt;
        std::memcpy(bytes + word * 4, &*value, 4);
    }
    if (ipv6) {
        std::memcpy(e.address.data(), bytes, 16);
    } else {
        e.address[10] = e.address[11] = 0xff;
        std::memcpy(e.address.data() + 12, bytes, 4);
    }
    auto number = hexWord(std::string(8 - port.size(), '0') + std::string(port));
    if (!number) return std::nullopt;
    e.port = static_cast<int>(*number);
    return e;
}

bool unspecified(const Endpoint& e) {
    static const std::array<std::uint8_t, 16> any6{};
    std::array<std::uint8_t, 16> any4{};
    any4[10] = any4[11] = 0xff;
    return e.address == any6 || e.address == any4;
}

std::vector<std::string_view> words(std::string_view line) {
    std::vector<std::string_view> out;
    std::size_t i = 0;
    while (i < line.size()) {
        while (i < line.size() && line[i] == ' ') ++i;
        std::size_t start = i;
        while (i < line.size() && line[i] != ' ') ++i;
        if (i > start) out.push_back(line.substr(start, i - start));
    }
    return out;
}

std::optional<uid_t> number(std::string_view text) {
    if (text.empty() || text.size() > 10) return std::nullopt;
    unsigned long n = 0;
    for (char c : text) {
        if (c < '0' || c > '9') return std::nullopt;
        n = n * 10 + static_cast<unsigned long>(c - '0');
    }
    return static_cast<uid_t>(n);
}

std::string readTable(const char* path) {
    std::ifstream in(path, std::ios::binary);
    std::string text;
    char buffer[65536];
    while (in && text.size() < tableCap) {
        in.read(buffer, sizeof buffer);
        text.append(buffer, static_cast<std::size_t>(in.gcount()));
    }
    return text;
}

} // namespace

std::optional<Endpoint> endpoint(std::string_view address, int port) {
    Endpoint e;
    e.port = port;
    std::string text(address);
    in_addr v4{};
    in6_addr v6{};
    if (::inet_pton(AF_INET, text.c_str(), &v4) == 1) {
        e.address[10] = e.address[11] = 0xff;
        std::memcpy(e.address.data() + 12, &v4, 4);
        return e;
    }
    if (::inet_pton(AF_INET6, text.c_str(), &v6) == 1) {
        std::memcpy(e.address.data(), &v6, 16);
        return e;
    }
    return std::nullopt;
}

namespace {

struct Found {
    std::optional<uid_t> exact;
    std::optional<uid_t> listener; // -1 when listeners of different users share the port
};

Found look(std::string_view table, bool ipv6, const Endpoint& server, const Endpoint& client) {
    Found found;
    std::size_t start = table.find('\n'); // the first line names the columns
    while (start != std::string_view::npos && start < table.size()) {
        std::size_t end = table.find('\n', start + 1);
        std::string_view line = table.substr(start + 1, end == std::string_view::npos ? std::string_view::npos : end - start - 1);
        start = end;
        auto w = words(line);
        // sl local remote state queues timer retransmits uid ...
        if (w.size() < 8) continue;
        auto local = parse(w[1], ipv6), remote = parse(w[2], ipv6);
        auto uid = number(w[7]);
        if (!local || !remote || !uid) continue;
        if (*local == server && *remote == client) {
            found.exact = uid;
            return found;
        }
        bool listening = w[3] == "0A" && local->port == server.port && (local->address == server.address || unspecified(*local));
        if (listening) found.listener = found.listener && *found.listener != *uid ? static_cast<uid_t>(-1) : *uid;
    }
    return found;
}

} // namespace

std::optional<uid_t> find(std::string_view table, bool ipv6, const Endpoint& server, const Endpoint& client) {
    Found found = look(table, ipv6, server, client);
    return found.exact ? found.exact : found.listener;
}

Answer asked(const Endpoint& server, const Endpoint& client) {
    static const std::uint8_t mapped[12] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff};
    const bool v4 = std::memcmp(server.address.data(), mapped, 12) == 0 && std::memcmp(client.address.data(), mapped, 12) == 0;
    struct {
        nlmsghdr header;
        inet_diag_req_v2 request;
    } message{};
    message.header.nlmsg_len = sizeof message;
    message.header.nlmsg_type = SOCK_DIAG_BY_FAMILY;
    message.header.nlmsg_flags = NLM_F_REQUEST;
    message.request.sdiag_family = v4 ? AF_INET : AF_INET6;
    message.request.sdiag_protocol = IPPROTO_TCP;
    message.request.idiag_states = ~0u;
    // One socket, looked up as the kernel routes a packet to it: the connection the server accepted
    // for us, else the listener on the port.
    inet_diag_sockid& id = message.request.id;
    id.idiag_sport = htons(static_cast<std::uint16_t>(server.port));
    id.idiag_dport = htons(static_cast<std::uint16_t>(client.port));
    if (v4) {
        std::memcpy(id.idiag_src, server.address.data() + 12, 4);
        std::memcpy(id.idiag_dst, client.address.data() + 12, 4);
    } else {
        std::memcpy(id.idiag_src, server.address.data(), 16);
        std::memcpy(id.idiag_dst, client.address.data(), 16);
    }
    id.idiag_cookie[0] = id.idiag_cookie[1] = INET_DIAG_NOCOOKIE;

    const int fd = ::socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC, NETLINK_SOCK_DIAG);
    if (fd < 0) return {};
    sockaddr_nl kernel{};
    kernel.nl_family = AF_NETLINK;
    Answer out;
    if (::sendto(fd, &message, sizeof message, 0, reinterpret_cast<sockaddr*>(&kernel), sizeof kernel) ==
        static_cast<ssize_t>(sizeof message)) {
        // The kernel answers within the send, so the answer is waiting and nothing blocks.
        alignas(nlmsghdr) char answer[8192];
        const ssize_t n = ::recv(fd, answer, sizeof answer, MSG_DONTWAIT);
        const auto* reply = reinterpret_cast<const nlmsghdr*>(answer);
        if (n >= static_cast<ssize_t>(sizeof(nlmsghdr)) && NLMSG_OK(reply, static_cast<unsigned>(n))) {
            if (reply->nlmsg_type == SOCK_DIAG_BY_FAMILY && reply->nlmsg_len >= NLMSG_LENGTH(sizeof(inet_diag_msg)))
                out = {true, static_cast<const inet_diag_msg*>(NLMSG_DATA(reply))->idiag_uid};
            else if (reply->nlmsg_type == NLMSG_ERROR && reply->nlmsg_len >= NLMSG_LENGTH(sizeof(nlmsgerr)) &&
                     static_cast<const nlmsgerr*>(NLMSG_DATA(reply))->error == -ENOENT)
                out = {true, std::nullopt};
        }
    }
    ::close(fd);
    return out;
}

std::optional<uid_t> of(const Endpoint& server, const Endpoint& client) {
    if (Answer answer = asked(server, client); answer.answered) return answer.uid;
    Found v4 = look(readTable("/proc/net/tcp"), false, server, client);
    if (v4.exact) return v4.exact;
    Found v6 = look(readTable("/proc/net/tcp6"), true, server, client);
    if (v6.exact) return v6.exact;
    if (v4.listener && v6.listener && *v4.listener != *v6.listener) return static_cast<uid_t>(-1);
    return v4.listener ? v4.listener : v6.listener;
}

} // namespace orvan::PortOwner
