#pragma once
// The answers of the computers' endpoints. Each key is optional unless said, and a key of the
// wrong type fails the whole answer: the model then treats it as absent.

#include "computers/CompanionHost.h"
#include "computers/HostSandbox.h"

#include <optional>
#include <string>
#include <vector>

namespace orvan {

// The list of added computers, with the SSH configuration's Host entries and this Mac's bridge.
struct HostsList {
    std::vector<CompanionHost> hosts;
    std::vector<std::string> ssh;
    std::optional<std::string> bridge;
    static std::optional<HostsList> decode(const Json& j);
};

// A test, an add or an update: the words of the work done, and on failure the bridge's sentence.
struct HostReply {
    std::optional<std::vector<std::string>> steps;
    std::optional<std::string> message;
    std::optional<CompanionHost> host;
    static std::optional<HostReply> decode(const Json& j);
};

// A check or a Docker install. Only the sandbox, note, message and steps are used; the rest is
// still read, so a wrong type there is as wrong as anywhere.
struct HostCheck {
    std::optional<std::string> docker;
    std::optional<HostSandbox> sandbox;
    std::optional<std::string> note;
    std::optional<std::string> message;
    std::optional<std::vector<std::string>> steps;
    std::optional<std::string> error;
    static std::optional<HostCheck> decode(const Json& j);
};

// The sandbox desktop's work on a computer.
struct HostSandboxReply {
    std::optional<HostSandbox> sandbox;
    std::optional<std::string> message;
    static std::optional<HostSandboxReply> decode(const Json& j);
};

} // namespace orvan
