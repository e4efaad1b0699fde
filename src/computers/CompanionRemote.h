#pragma once
// Another computer's screen that the phone opens through this one, over VNC or RDP, and what a
// test of one found. Read strictly: a missing required key or a key of the wrong type rejects it.

#include "foundation/Json.h"

#include <optional>
#include <string>
#include <vector>

namespace orvan {

struct CompanionRemote {
    std::string id;
    std::string name;
    // "vnc" or "rdp".
    std::string protocol;
    std::string host;
    int port = 0;
    std::optional<std::string> user;
    // A password is kept for it.
    std::optional<bool> secret;
    // The certificate trusted for it.
    std::optional<std::string> fingerprint;

    // The protocol, who signs in where, and the port when it is not the protocol's usual one.
    std::string line() const;

    static std::optional<CompanionRemote> decode(const Json& j);
    bool operator==(const CompanionRemote&) const = default;
};

// The list's answer.
struct RemotesList {
    std::vector<CompanionRemote> remotes;
    static std::optional<RemotesList> decode(const Json& j);
};

struct RemoteFound {
    bool ok = false;
    std::optional<std::string> error;
    std::optional<std::string> message;
    // The desktop's own name and its screen.
    std::optional<std::string> name;
    std::optional<int> w;
    std::optional<int> h;
    // How it signs in: "vnc" with its password, anything else without one.
    std::optional<std::string> security;
    // The server's certificate, and whether it must be trusted before the test can go on.
    std::optional<std::string> fingerprint;
    std::optional<bool> confirm;

    static std::optional<RemoteFound> decode(const Json& j);
    bool operator==(const RemoteFound&) const = default;
};

} // namespace orvan
