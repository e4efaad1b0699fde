#pragma once
// Who is at the other end of a loopback connection. Anyone on this computer may listen on a free
// port, so before the bridge's key goes out we make sure the socket that accepted us belongs to
// this user. Linux lists every TCP socket with its owner's uid in /proc/net/tcp and tcp6; an
// accepted socket carries the uid of the listener that made it.

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

// The same, read from this computer's tables; absent when neither table names the socket.
std::optional<uid_t> of(const Endpoint& server, const Endpoint& client);

} // namespace orvan::PortOwner
