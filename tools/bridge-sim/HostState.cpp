#include "HostState.h"

#include <algorithm>
#include <sstream>

namespace orvan::sim {

using nlohmann::json;

namespace {

double seconds(TimePoint from, TimePoint to) { return std::chrono::duration<double>(to - from).count(); }

bool isText(const json& body, const char* key) { return body.contains(key) && body[key].is_string(); }

Reply slowly(Reply reply, double delay) {
    reply.delaySeconds = delay;
    return reply;
}

std::string trimmed(const std::string& text) {
    const auto first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

// A fingerprint that stays the same for one address, as a host key would.
std::string fingerprintOf(const std::string& address) {
    std::uint64_t h = 1469598103934665603ull;
    for (unsigned char c : address) h = (h ^ c) * 1099511628211ull;
    std::ostringstream out;
    out << "SHA256:" << std::hex << h << (h >> 7) << "q0Zr4";
    return out.str();
}

SimHost machine(std::string target, std::string name, std::string id, std::string arch, std::string os,
                std::string address, int port, std::string user, std::string docker) {
    SimHost h;
    h.target = std::move(target);
    h.name = std::move(name);
    h.computerId = std::move(id);
    h.arch = std::move(arch);
    h.os = std::move(os);
    h.address = std::move(address);
    h.port = port;
    h.user = std::move(user);
    h.docker = std::move(docker);
    return h;
}

Reply silence(const SimHost& host) {
    return slowly(Reply::message(502, host.name + " did not answer over SSH: the connection timed out."), 2.0);
}

} // namespace

HostState HostState::seeded(const std::string& options) {
    HostState s;
    SimHost build = machine("build", "Build server", "c-7d1e", "x86_64", "linux", "192.168.1.20", 22, "rosa", "missing");
    build.version = "1.8.2";
    SimHost lab = machine("lab", "GPU lab", "c-31a9", "aarch64", "linux", "lab.example.net", 2222, "rosa", "ready");
    lab.version = "1.7.9";
    lab.older = true;
    lab.agents = {{"claude", true}, {"codex", false}};
    SimHost mini = machine("mini", "Studio Mac mini", "c-90be", "arm64", "darwin", "mini.local", 22, "", "unsupported");
    SimHost bsd = machine("bsd", "File server", "c-4f02", "amd64", "freebsd", "files.example.org", 0, "", "");
    SimHost win = machine("win", "Windows desktop", "c-b7c4", "x86_64", "windows", "192.168.1.40", 22, "rosa", "");
    win.terminalOnly = true;
    s.hosts = {build, lab, mini, bsd, win};
    s.ssh = {"build", "lab", "pi", "nas"};
    std::stringstream words(options);
    for (std::string word; std::getline(words, word, ',');)
        if (trimmed(word) == "badrow") s.badRow = true;
    return s;
}

SimHost* HostState::find(const json& body) {
    if (!isText(body, "target")) return nullptr;
    const std::string target = body["target"];
    auto it = std::find_if(hosts.begin(), hosts.end(), [&](const auto& h) { return h.target == target; });
    return it == hosts.end() ? nullptr : &*it;
}

void HostState::advance(SimHost& host, TimePoint now) {
    if (!host.buildStarted) return;
    double t = seconds(*host.buildStarted, now);
    if (t < downloadSeconds) host.image = "downloading";
    else if (t < downloadSeconds + stageSeconds) host.image = "loading";
    else if (t < downloadSeconds + 2 * stageSeconds) host.image = "chrome";
    else {
        host.image = "ready";
        host.buildStarted.reset();
    }
}

json HostState::hostJson(const SimHost& h) const {
    json row = {{"target", h.target}, {"name", h.name}, {"computerId", h.computerId}, {"arch", h.arch},
                {"os", h.os}, {"address", h.address}, {"port", h.port}, {"service", "orvan-bridge.service"}};
    if (!h.user.empty()) row["user"] = h.user;
    if (!h.docker.empty()) row["docker"] = h.docker;
    if (h.terminalOnly) row["terminalOnly"] = true;
    if (!h.version.empty()) row["version"] = h.version;
    if (h.older) row["older"] = true;
    return row;
}

json HostState::sandboxJson(const SimHost& h, TimePoint now) {
    json box = {{"runtime", "docker"}, {"image", h.image}, {"download", baseBytes}, {"agents", h.agents}};
    if (h.buildStarted) box["progress"] = std::clamp(seconds(*h.buildStarted, now) / downloadSeconds, 0.0, 1.0);
    return box;
}

json HostState::list(TimePoint) {
    json rows = json::array();
    for (const auto& h : hosts) rows.push_back(hostJson(h));
    // A port written as text: one wrong type, and the companion must let the whole list go.
    if (badRow) rows.push_back(json{{"target", "odd"}, {"name", "Odd one"}, {"computerId", "c-0000"}, {"port", "22"}});
    return json{{"hosts", rows}, {"ssh", ssh}, {"bridge", bridge}};
}

Reply HostState::test(const json& body) {
    if (!isText(body, "address") || trimmed(body["address"]).empty())
        return Reply::message(400, "Give the computer's address.");
    const std::string address = trimmed(body["address"]);
    if (address.find("unreachable") != std::string::npos)
        return slowly(Reply::message(502, "No computer answered at " + address + " on that port."), testSeconds);
    const std::string print = fingerprintOf(address);
    // Nothing, not even a password, goes there before its key is trusted.
    if (!isText(body, "fingerprint"))
        return slowly(Reply::json(200, json{{"os", "linux"}, {"arch", "x86_64"}, {"fingerprint", print},
                                            {"agents", json::array()}, {"companion", false}, {"confirm", true}}),
                      testSeconds);
    if (body["fingerprint"] != print)
        return slowly(Reply::message(409, "The host key of " + address + " changed since you trusted it."), testSeconds);
    // A new computer has Claude Code but no Node.js and no curl: the road then needs both and sudo.
    return slowly(Reply::json(200, json{{"os", "linux"}, {"arch", "x86_64"}, {"fingerprint", print},
                                        {"agents", {"claude"}}, {"node", false}, {"companion", false},
                                        {"docker", "missing"}, {"sudoFree", false}}),
                  testSeconds);
}

Reply HostState::add(const json& body) {
    if (!isText(body, "address") || trimmed(body["address"]).empty())
        return Reply::message(400, "Give the computer's address.");
    const std::string address = trimmed(body["address"]);
    if (!isText(body, "fingerprint") || body["fingerprint"] != fingerprintOf(address))
        return slowly(Reply::json(409, json{{"steps", {"Connecting to " + address}},
                                            {"message", "Trust the computer's host key first."}}),
                      testSeconds);
    if (std::any_of(hosts.begin(), hosts.end(), [&](const auto& h) { return h.target == address; }))
        return Reply::message(409, address + " is already added.");
    SimHost h;
    h.target = address;
    h.name = isText(body, "name") && !trimmed(body["name"]).empty() ? trimmed(body["name"]) : address;
    h.computerId = "c-" + std::to_string(1000 + hosts.size());
    h.arch = "x86_64";
    h.os = "linux";
    h.address = address;
    h.port = body.contains("port") && body["port"].is_number_integer() ? body["port"].get<int>() : 22;
    h.user = isText(body, "user") ? trimmed(body["user"]) : "";
    h.terminalOnly = body.value("terminalOnly", false) == true;
    h.installed = {"claude"};
    h.hasCurl = false;
    h.signedIn = {"claude"};
    std::vector<std::string> steps{"Signed in as " + (h.user.empty() ? std::string("the default user") : h.user),
                                   "Put this Mac's key on it"};
    if (address.find("failadd") != std::string::npos)
        return slowly(Reply::json(502, json{{"steps", steps},
                                            {"message", "The bridge did not start there: the computer has no user "
                                                        "service manager."}}),
                      addSeconds);
    if (!h.terminalOnly) {
        h.version = bridge;
        steps.push_back("Copied the bridge " + bridge + " there");
        steps.push_back("Started it as a service");
    }
    hosts.push_back(h);
    return slowly(Reply::json(200, json{{"steps", steps}, {"host", hostJson(h)}}), addSeconds);
}

Reply HostState::remove(const json& body) {
    SimHost* h = find(body);
    if (!h) return Reply::message(404, "No such computer is added.");
    const std::string target = h->target;
    std::erase_if(hosts, [&](const auto& x) { return x.target == target; });
    return slowly(Reply::done(), 1.0);
}

Reply HostState::check(const json& body, TimePoint now) {
    SimHost* h = find(body);
    if (!h) return Reply::message(404, "No such computer is added.");
    // A test may tell a computer to stop answering from now on.
    if (body.value("simulateSilence", false) == true) h->silent = true;
    if (h->silent) return silence(*h);
    advance(*h, now);
    json answer = json::object();
    if (h->os == "linux") {
        if (h->docker.empty()) h->docker = "missing";
    } else {
        h->docker = "unsupported";
    }
    // Reading the computer reads its bridge too.
    if (h->version.empty()) h->version = bridge;
    answer["docker"] = h->docker;
    if (h->docker == "ready") {
        answer["sandbox"] = sandboxJson(*h, now);
        answer["steps"] = {"Docker is ready", "The sandbox desktop is " + h->image};
    } else if (h->os == "freebsd") {
        answer["note"] = "FreeBSD has no Docker; its shells and agents still work.";
    } else {
        answer["steps"] = {"Docker is " + h->docker};
    }
    return slowly(Reply::json(200, answer), checkSeconds);
}

Reply HostState::installDocker(const json& body, TimePoint) {
    SimHost* h = find(body);
    if (!h) return Reply::message(404, "No such computer is added.");
    if (h->silent) return silence(*h);
    if (h->os != "linux") return Reply::message(400, h->name + " does not run Docker this way.");
    if (body.contains("password") && !body["password"].is_string())
        return Reply::message(400, "Give the password as text.");
    const bool given = isText(body, "password");
    if (!given || body["password"] != sudoPassword)
        return slowly(Reply::json(401, json{{"error", "sudo"},
                                            {"message", given ? "sudo refused that password." : "sudo needs a password there."}}),
                      given ? 1.0 : 0.5);
    const bool starting = h->docker == "stopped";
    h->docker = "ready";
    h->image = "missing";
    h->agents = {{"claude", false}, {"codex", false}};
    std::vector<std::string> steps;
    if (!starting) steps.push_back("Installed docker.io with apt");
    steps.push_back("Started Docker's engine");
    steps.push_back("Added " + (h->user.empty() ? std::string("the user") : h->user) + " to the docker group");
    return slowly(Reply::json(200, json{{"docker", "ready"}, {"steps", steps}}), dockerSeconds);
}

Reply HostState::sandbox(const json& body, TimePoint now) {
    SimHost* h = find(body);
    if (!h) return Reply::message(404, "No such computer is added.");
    if (h->silent) return silence(*h);
    if (!isText(body, "action")) return Reply::message(400, "Give an action: build, status or tools.");
    const std::string action = body["action"];
    if (h->docker != "ready") return Reply::message(409, "Docker isn't ready on " + h->name + ".");
    advance(*h, now);
    if (action == "build") {
        if (h->image == "missing" || h->image == "failed") {
            h->buildStarted = now;
            advance(*h, now);
        }
    } else if (action == "tools") {
        for (auto& [agent, on] : h->agents) on = true;
        return slowly(Reply::json(200, json{{"sandbox", sandboxJson(*h, now)}}), toolsSeconds);
    } else if (action != "status") {
        return Reply::message(400, "Give an action: build, status or tools.");
    }
    return Reply::json(200, json{{"sandbox", sandboxJson(*h, now)}});
}

Reply HostState::update(const json& body) {
    SimHost* h = find(body);
    if (!h) return Reply::message(404, "No such computer is added.");
    if (h->silent) return silence(*h);
    if (h->terminalOnly) return Reply::message(409, "Nothing was installed on " + h->name + ".");
    std::vector<std::string> steps{"Copied the bridge " + bridge + " to " + h->name, "Started it again"};
    h->version = bridge;
    h->older = false;
    return slowly(Reply::json(200, json{{"steps", steps}}), updateSeconds);
}

namespace {

const std::vector<std::pair<std::string, std::string>> agentTitles{
    {"claude", "Claude Code"}, {"codex", "Codex"}, {"grok", "Grok"}, {"cursor", "Cursor"}, {"gemini", "Gemini"}};

std::string titleOf(const std::string& name) {
    for (const auto& [agent, title] : agentTitles)
        if (agent == name) return title;
    return name;
}

bool holds(const std::vector<std::string>& list, const std::string& word) {
    return std::find(list.begin(), list.end(), word) != list.end();
}

} // namespace

Reply HostState::lookAgents(const json& body) {
    SimHost* h = find(body);
    if (!h) return Reply::message(404, "No such computer is added.");
    if (h->silent) return silence(*h);
    return slowly(Reply::json(200, json{{"os", h->os}, {"agents", h->installed}, {"node", h->node}}), lookSeconds);
}

Reply HostState::installAgents(const json& body) {
    SimHost* h = find(body);
    if (!h) return Reply::message(404, "No such computer is added.");
    if (h->silent) return silence(*h);
    if (h->terminalOnly) return Reply::message(409, "Nothing is installed on " + h->name + ": it is for the terminal only.");
    if (!body.contains("agents") || !body["agents"].is_array()) return Reply::message(400, "Give the agents to install.");
    std::vector<std::string> names;
    for (const auto& name : body["agents"]) {
        if (!name.is_string()) return Reply::message(400, "Give the agents' names as text.");
        names.push_back(name);
    }
    if (body.contains("password") && !body["password"].is_string())
        return Reply::message(400, "Give the password as text.");
    std::vector<std::string> steps;
    if (!h->hasCurl) {
        const bool given = isText(body, "password");
        if (!given || body["password"] != sudoPassword)
            return slowly(Reply::json(401, json{{"packages", {"curl"}},
                                                {"message", given ? "sudo refused that password." : "sudo needs a password there."}}),
                          given ? 1.0 : 0.5);
        h->hasCurl = true;
        steps.push_back("Installed curl with apt");
    }
    for (const auto& name : names) {
        if (name == "node") {
            h->node = true;
            steps.push_back("Installed Node.js 22.11.0 into ~/.local/node");
            continue;
        }
        if (h->address.find("failinstall") != std::string::npos) {
            steps.push_back(titleOf(name) + "'s installer stopped: the download was cut off");
            return slowly(Reply::json(502, json{{"steps", steps}, {"message", "Not every agent installed there."}}),
                          installSeconds);
        }
        if (!holds(h->installed, name)) h->installed.push_back(name);
        steps.push_back("Installed " + titleOf(name));
    }
    return slowly(Reply::json(200, json{{"steps", steps}}), installSeconds);
}

Reply HostState::copyAccounts(const json& body, const json& accounts) {
    SimHost* h = find(body);
    if (!h) return Reply::message(404, "No such computer is added.");
    if (h->silent) return silence(*h);
    if (!body.contains("accounts") || !body["accounts"].is_array()) return Reply::message(400, "Give the accounts to copy.");
    if (h->address.find("failcopy") != std::string::npos)
        return slowly(Reply::message(502, "The accounts' folder there could not be written."), copySeconds);
    const bool replace = body.value("replace", false) == true;
    json results = json::array();
    std::vector<std::string> steps;
    bool waits = false;
    for (const auto& id : body["accounts"]) {
        if (!id.is_string()) continue;
        const json* account = nullptr;
        if (accounts.contains("accounts") && accounts["accounts"].is_array())
            for (const auto& row : accounts["accounts"])
                if (row.is_object() && row.value("id", json()) == id) account = &row;
        if (!account) {
            results.push_back({{"id", id}, {"copied", false}, {"message", "No such account here."}});
            continue;
        }
        const std::string provider = account->value("provider", "");
        const std::string kind = account->value("kind", "");
        const std::string label = account->value("label", "");
        if (provider == "claude" && kind == "login" && account->value("portable", false) != true) {
            results.push_back({{"id", id}, {"copied", false}, {"code", "needs_token"}});
            continue;
        }
        if (kind == "login" && holds(h->signedIn, provider) && !replace) {
            results.push_back({{"id", id}, {"copied", false}, {"code", "replaces_login"}});
            waits = true;
            continue;
        }
        if (kind == "login" && !holds(h->signedIn, provider)) h->signedIn.push_back(provider);
        results.push_back({{"id", id}, {"copied", true}});
        steps.push_back("Copied " + label + " there");
    }
    return slowly(Reply::json(waits ? 409 : 200, json{{"steps", steps}, {"results", results}}), copySeconds);
}

} // namespace orvan::sim
