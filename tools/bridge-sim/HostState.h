#pragma once
// The computers this bridge reaches over SSH, as the simulator keeps them: a Linux box without
// Docker whose install asks for sudo's password, one with Docker ready and an older bridge, a Mac,
// a FreeBSD box and a Windows one for the terminal only. The long calls answer only after some
// seconds, with their steps, as the bridge does once the work over there is done; the sandbox
// desktop on a computer is made step by step and followed by polling. Not thread-safe: the server
// holds its lock.

#include "Reply.h"
#include "Rfc3339.h"

#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace orvan::sim {

struct SimHost {
    std::string target;
    std::string name;
    std::string computerId;
    std::string arch;
    std::string os;
    std::string address;
    int port = 22;
    std::string user;
    std::string docker; // "" when never read
    bool terminalOnly = false;
    std::string version; // "" when never read
    bool older = false;
    // The sandbox desktop there, once Docker runs.
    std::string image = "missing";
    std::optional<TimePoint> buildStarted;
    std::map<std::string, bool> agents;
    // Stopped answering over SSH: every operation on it fails, slowly.
    bool silent = false;
    // The coding agents installed there, Node.js, and whether the installers' tools (curl) are there.
    std::vector<std::string> installed;
    bool node = false;
    bool hasCurl = true;
    // Providers whose own sign-in is there; copying a login of one asks before replacing it.
    std::vector<std::string> signedIn;
};

struct HostState {
    // How long the work over there takes before the bridge answers, in seconds.
    static constexpr double testSeconds = 1.0;
    static constexpr double checkSeconds = 1.5;
    static constexpr double dockerSeconds = 3.0;
    static constexpr double addSeconds = 2.0;
    static constexpr double updateSeconds = 2.0;
    static constexpr double toolsSeconds = 1.0;
    static constexpr double lookSeconds = 0.5;
    static constexpr double installSeconds = 3.0;
    static constexpr double copySeconds = 1.5;
    // The image build's stages: a measured download, then unpacking and the browser.
    static constexpr double downloadSeconds = 4.5;
    static constexpr double stageSeconds = 1.5;
    static constexpr std::int64_t baseBytes = 850'000'000;
    // The one password sudo takes on the Linux box without Docker.
    static constexpr const char* sudoPassword = "tiger-lily-42";

    std::vector<SimHost> hosts;
    std::vector<std::string> ssh;
    std::string bridge = "1.8.2";
    // The list carries a row the companion must refuse, and with it the whole list.
    bool badRow = false;

    // `options`: a comma list; "badrow" starts with a broken row in the list.
    static HostState seeded(const std::string& options = {});

    nlohmann::json list(TimePoint now);
    Reply test(const nlohmann::json& body);
    Reply add(const nlohmann::json& body);
    Reply remove(const nlohmann::json& body);
    Reply check(const nlohmann::json& body, TimePoint now);
    Reply installDocker(const nlohmann::json& body, TimePoint now);
    Reply sandbox(const nlohmann::json& body, TimePoint now);
    Reply update(const nlohmann::json& body);
    // Agents and accounts onto a computer. An address with "failadd", "failinstall" or "failcopy"
    // in it fails at that step, after the steps done before the failure.
    Reply lookAgents(const nlohmann::json& body);
    Reply installAgents(const nlohmann::json& body);
    // `accounts`: the bridge's own list of accounts, as its accounts family reads it.
    Reply copyAccounts(const nlohmann::json& body, const nlohmann::json& accounts);

private:
    SimHost* find(const nlohmann::json& body);
    void advance(SimHost& host, TimePoint now);
    nlohmann::json hostJson(const SimHost& host) const;
    nlohmann::json sandboxJson(const SimHost& host, TimePoint now);
};

} // namespace orvan::sim
