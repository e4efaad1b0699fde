#include "SignInState.h"

#include "HostRoutes.h"
#include "HostState.h"

#include <array>

namespace orvan::sim {

using nlohmann::json;

namespace {

double seconds(TimePoint from, TimePoint to) { return std::chrono::duration<double>(to - from).count(); }

struct Agent {
    const char* tool;
    bool headless;
    const char* lands;
    const char* note;
};

constexpr std::array<Agent, 5> agents{{
    {"claude", true, "own", ""},
    {"codex", true, "account", ""},
    {"gemini", true, "own", ""},
    {"grok", true, "own", ""},
    {"cursor", false, "own", "Cursor signs in only with a screen there."},
}};

const Agent* agentOf(const std::string& tool) {
    for (const auto& agent : agents)
        if (tool == agent.tool) return &agent;
    return nullptr;
}

std::string pageOf(const std::string& target, const std::string& tool) {
    return "https://signin.example.com/" + tool + "/device?computer=" + target;
}

// The computer and the tool a call names, or the refusal.
struct Named {
    std::string target;
    std::string tool;
    std::optional<Reply> refusal;
};

Named named(const json& body, bool needsTool) {
    Named n;
    if (!body.contains("target") || !body["target"].is_string())
        return {{}, {}, Reply::message(400, "Say which computer, by its target.")};
    n.target = body["target"];
    const SimHost* host = HostRoutes::added(n.target);
    if (!host) return {{}, {}, Reply::message(404, "No computer " + n.target + " is added here.")};
    if (host->terminalOnly)
        return {{}, {}, Reply::message(409, host->name + " was added for its terminal only; nothing signs in there.")};
    if (!needsTool) return n;
    if (!body.contains("tool") || !body["tool"].is_string() || !agentOf(body["tool"]))
        return {{}, {}, Reply::message(400, "Say which agent signs in: claude, codex, gemini, grok or cursor.")};
    n.tool = body["tool"];
    return n;
}

} // namespace

json SignInState::stateOf(const std::string& target, const std::string& tool, TimePoint now) const {
    auto found = running.find({target, tool});
    if (found == running.end()) return json{{"state", "none"}};
    const SimSignIn& run = found->second;
    if (run.canceled) return json{{"state", "canceled"}};
    const double t = seconds(run.started, now);
    const std::string page = pageOf(target, tool);
    if (tool == "claude") {
        if (t < pageSeconds) return json{{"state", "show-link"}, {"url", page}, {"code", claudeCode}, {"lands", "own"}};
        if (t < pageSeconds + verifySeconds) return json{{"state", "verifying"}, {"lands", "own"}};
        return json{{"state", "done"}, {"lands", "own"}};
    }
    if (tool == "codex") {
        if (!run.codeTaken) return json{{"state", "waiting-for-code"}, {"url", page}, {"paste", true}, {"lands", "account"}};
        if (seconds(*run.codeTaken, now) < verifySeconds) return json{{"state", "verifying"}, {"lands", "account"}};
        return json{{"state", "done"}, {"lands", "account"}, {"label", "Codex on " + target}};
    }
    if (tool == "gemini") {
        if (t < failSeconds) return json{{"state", "show-link"}, {"url", page}, {"lands", "own"}};
        return json{{"state", "failed"}, {"message", "Gemini refused the sign-in: that Google account has no access."}};
    }
    // Grok's page never sees anyone.
    return json{{"state", "show-link"}, {"url", page}, {"lands", "own"}};
}

Reply SignInState::tools(const json& body, TimePoint now) {
    Named n = named(body, false);
    if (n.refusal) return *n.refusal;
    json list = json::array();
    json signIns = json::object();
    for (const auto& agent : agents) {
        json state = stateOf(n.target, agent.tool, now);
        const std::string word = state["state"];
        const bool done = word == "done";
        json row{{"tool", agent.tool}, {"installed", true}, {"headless", agent.headless},
                 {"signedIn", done || std::string(agent.lands) == "account"}, {"lands", agent.lands}};
        if (*agent.note) row["note"] = agent.note;
        list.push_back(row);
        if (word != "none" && word != "canceled" && !done && word != "failed") signIns[agent.tool] = state;
    }
    return Reply::json(200, json{{"tools", list}, {"signIns", signIns}});
}

Reply SignInState::start(const json& body, TimePoint now) {
    Named n = named(body, true);
    if (n.refusal) return *n.refusal;
    if (!agentOf(n.tool)->headless)
        return Reply::message(409, "Cursor signs in only with a screen there.");
    running[{n.target, n.tool}] = SimSignIn{now, std::nullopt, false};
    Reply reply = Reply::json(200, stateOf(n.target, n.tool, now));
    // Starting the agent's login over SSH takes a moment.
    reply.delaySeconds = 0.5;
    return reply;
}

Reply SignInState::read(const json& body, TimePoint now) {
    Named n = named(body, true);
    if (n.refusal) return *n.refusal;
    return Reply::json(200, stateOf(n.target, n.tool, now));
}

Reply SignInState::code(const json& body, TimePoint now) {
    Named n = named(body, true);
    if (n.refusal) return *n.refusal;
    auto found = running.find({n.target, n.tool});
    if (found == running.end() || found->second.canceled || n.tool != "codex")
        return Reply::message(409, "No sign-in there is waiting for a code.");
    if (!body.contains("code") || !body["code"].is_string() || body["code"] != codexCode)
        return Reply::message(400, "That code was not accepted. Copy it from the page again.");
    if (!found->second.codeTaken) found->second.codeTaken = now;
    return Reply::json(200, stateOf(n.target, n.tool, now));
}

Reply SignInState::cancel(const json& body, TimePoint now) {
    Named n = named(body, true);
    if (n.refusal) return *n.refusal;
    auto found = running.find({n.target, n.tool});
    if (found != running.end()) found->second.canceled = true;
    return Reply::json(200, stateOf(n.target, n.tool, now));
}

} // namespace orvan::sim
