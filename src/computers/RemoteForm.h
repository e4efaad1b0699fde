#pragma once
// The add sheet's form for a remote desktop, and what a test or an add sends from it. The
// password lives only here, in memory, and goes into one request body; the bridge keeps it.

#include "foundation/Json.h"

#include <string>

namespace orvan {

struct RemoteForm {
    std::string name;
    std::string proto = "vnc";
    std::string host;
    std::string port;
    std::string user;
    std::string domain;
    std::string password;
    // The certificate the owner trusted.
    std::string fingerprint;

    static int defaultPort(const std::string& proto) { return proto == "rdp" ? 3389 : 5900; }
    bool rdp() const { return proto == "rdp"; }
    // Enough to test: a host, and for RDP a user.
    bool ready() const;
    Json body() const;
    // Leaves nothing of the password in memory.
    void wipePassword();
};

} // namespace orvan
