#pragma once
// Who is at the other end of a loopback connection. Anyone on this computer may listen on a free
// port, so before the bridge's key goes out we make sure the socket that accepted us belongs to
// this user. An accepted socket carries the uid of the listener that made it. The kernel answers
// for one socket through sock_diag; /proc/net/tcp and tcp6 list every socket with its owner's uid
// too, but reading them walks the machine's whole connection table (milliseconds on a large host),
// so they serve only where sock_diag can't be asked.

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace orvan::PortOwner {

// An address as sixteen bytes (IPv4 as its IPv6-mapped form) and a port.
struct Endpoint {
    std::array<std::uint8_t, 16> address{};
    int port = 0;
    bool operator==(const Endpoint&) const = default;
};

std::optional<Endpoint> endpoint(std::string_view address, int port);

// The uid owning the socket of `server` that is connected to `client`, else the uid of a socket
// listening on `server`'s port (at its address or at any address). Looked up in the text of
// /proc/net/tcp (`ipv6` false) or /proc/net/tcp6.
std::optional<uid_t> find(std::string_view table, bool ipv6, const Endpoint& server, const Endpoint& client);

// The same, asked of this computer's kernel; absent when no socket is there.
std::optional<uid_t> of(const Endpoint& server, const Endpoint& client);

// The kernel's answer alone. Unanswered when it could not be asked; answered without a uid when
// it knows of no such socket.
struct Answer {
    bool answered = false;
    std::optional<uid_t> uid;
};
Answer asked(const Endpoint& server, const Endpoint& client);

} // namespace orvan::PortOwner
