#pragma once
// The remote desktops this bridge opens for the owner's phone. A test reaches the desktop and
// signs in: VNC desktops take the one password below (or none, for a desktop that asks for
// none), anything at a host ending ".invalid" can't be reached, and an RDP server first shows
// its certificate, which must come back as the trusted fingerprint before a test or an add goes
// on. Passwords are checked and dropped, never kept or echoed. Not thread-safe: the server holds
// its lock.

#include "Reply.h"
#include "Rfc3339.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace orvan::sim {

struct SimRemote {
    std::string id;
    std::string name;
    std::string protocol;
    std::string host;
    int port = 0;
    std::string user;
    bool secret = false;
    std::string fingerprint;
};

struct RemoteState {
    static constexpr const char* password = "orchid-88";
    static constexpr double testSeconds = 1.0;

    std::vector<SimRemote> remotes;
    int nextId = 2;

    static RemoteState seeded();
    // The certificate an RDP server at `host` shows.
    static std::string certificateOf(const std::string& host);

    nlohmann::json list() const;
    Reply test(const nlohmann::json& body);
    Reply add(const nlohmann::json& body);
    Reply remove(const nlohmann::json& body);

private:
    // What a test finds; an "ok" false answer carries its error and message.
    nlohmann::json reach(const nlohmann::json& body, std::optional<Reply>& refusal) const;
};

} // namespace orvan::sim
