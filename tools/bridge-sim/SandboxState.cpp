#include "SandboxState.h"

#include <algorithm>

namespace orvan::sim {

using nlohmann::json;

namespace {

constexpr double dockerOpensSeconds = 3.0;
constexpr std::size_t readsKept = 200;

double seconds(TimePoint from, TimePoint to) { return std::chrono::duration<double>(to - from).count(); }

bool isText(const json& body, const char* key) { return body.contains(key) && body[key].is_string(); }

// The install's stages after the download, each `stageSeconds` long.
const std::vector<std::string>& laterSteps() {
    static const std::vector<std::string> steps{"checking", "installing", "starting"};
    return steps;
}

} // namespace

SandboxState SandboxState::seeded(bool bare) {
    SandboxState s;
    s.sandboxes = {
        {"7f3a9c21e4b04d5e", "running", true, {"Ana's iPhone"}, ""},
        {"b81e22d0c9f14a77", "stopped", true, {}, ""},
        {"c4d5e6f708192a3b", "running", false, {}, ""},
        {"e0f1a2b3c4d5e6f7", "failed", false, {},
         "The container did not start: no space left on device.\nexit status 125\n  at create"},
    };
    s.runtimes = {
        {"container", false, "Needs a Mac with Apple silicon and macOS 15.", false, false, false, 110'000'000},
        {"docker", true, "", true, true, true, 600'000'000},
    };
    s.runtime = "docker";
    s.agents = {{"claude", false}, {"codex", false}};
    if (bare) {
        s.sandboxes.clear();
        s.runtimes[1].installed = false;
        s.runtimes[1].running = false;
        s.runtime.clear();
    }
    return s;
}

SimRuntime* SandboxState::find(const std::string& id) {
    auto it = std::find_if(runtimes.begin(), runtimes.end(), [&](const auto& r) { return r.id == id; });
    return it == runtimes.end() ? nullptr : &*it;
}

void SandboxState::advance(TimePoint now) {
    if (!started) started = now;
    if (buildStarted) {
        double t = seconds(*buildStarted, now);
        if (t < downloadSeconds) image = "downloading";
        else if (t < downloadSeconds + stageSeconds) image = "loading";
        else if (t < downloadSeconds + 2 * stageSeconds) image = "chrome";
        else if (buildFails) {
            image = "failed";
            imageNote = "Google Chrome could not be added: its download was cut off. The next sandbox tries again.";
            buildStarted.reset();
        } else {
            image = "ready";
            buildStarted.reset();
        }
    }
    if (dockerOpened && seconds(*dockerOpened, now) >= dockerOpensSeconds) {
        if (SimRuntime* docker = find("docker")) docker->running = true;
        dockerOpened.reset();
    }
    if (installStarted && seconds(*installStarted, now) >= downloadSeconds + laterSteps().size() * stageSeconds) {
        if (SimRuntime* r = find(installing)) {
            r->installed = true;
            r->running = true;
        }
        if (runtime.empty()) runtime = installing;
        installStarted.reset();
    }
}

json SandboxState::installJson(TimePoint now) const {
    json out{{"runtime", installing}};
    if (!installStarted) {
        out["step"] = "done";
        return out;
    }
    double t = seconds(*installStarted, now);
    if (t < downloadSeconds) {
        out["step"] = "downloading";
        out["progress"] = t / downloadSeconds;
        return out;
    }
    auto stage = std::min(laterSteps().size() - 1, static_cast<std::size_t>((t - downloadSeconds) / stageSeconds));
    out["step"] = laterSteps()[stage];
    if (laterSteps()[stage] == "starting") out["note"] = "Opening the engine for the first time…";
    return out;
}

json SandboxState::read(TimePoint now, bool counted) {
    advance(now);
    json list = json::array();
    for (const auto& s : sandboxes) {
        json row{{"session", s.session}, {"state", s.state}, {"keep", s.keep}};
        if (!s.watching.empty()) row["watching"] = s.watching;
        if (!s.reason.empty()) row["reason"] = s.reason;
        list.push_back(row);
    }
    json choices = json::array();
    std::string dockerWord;
    for (const auto& r : runtimes) {
        json c{{"id", r.id},         {"supported", r.supported},       {"installed", r.installed},
               {"running", r.running}, {"recommended", r.recommended}, {"chosen", r.id == runtime},
               {"size", r.size}};
        if (!r.why.empty()) c["why"] = r.why;
        choices.push_back(c);
        if (r.id == "docker" && r.installed) dockerWord = dockerOpened ? "starting" : r.running ? "running" : "stopped";
    }
    json out{{"sandboxes", list}, {"runtime", runtime}, {"docker", dockerWord}, {"image", image},
             {"agents", agents},  {"choices", choices}};
    if (image == "downloading" && buildStarted)
        out["progress"] = std::min(1.0, seconds(*buildStarted, now) / downloadSeconds);
    out["download"] = baseBytes;
    if (!imageNote.empty()) out["note"] = imageNote;
    if (!installing.empty()) out["install"] = installJson(now);
    // The reads before this one, for tests of the companion's pace; the companion reads no such key.
    out["simulator"] = {{"reads", readTimes}};
    if (!counted) return out;
    if (readTimes.size() >= readsKept) readTimes.erase(readTimes.begin());
    readTimes.push_back(seconds(*started, now));
    return out;
}

Reply SandboxState::stop(const json& body, TimePoint now) {
    advance(now);
    if (!isText(body, "session")) return Reply::message(400, "Say which session's sandbox to stop.");
    if (body.contains("discard") && !body["discard"].is_boolean())
        return Reply::message(400, "\"discard\" is true or false.");
    bool discard = body.value("discard", false);
    auto it = std::find_if(sandboxes.begin(), sandboxes.end(),
                           [&](const auto& s) { return s.session == body["session"].get<std::string>(); });
    if (it == sandboxes.end()) return Reply::message(404, "No sandbox belongs to that session.");
    if (discard || !it->keep) {
        sandboxes.erase(it);
    } else {
        it->state = "stopped";
        it->watching.clear();
    }
    return Reply::done();
}

Reply SandboxState::changeImage(const json& body, TimePoint now) {
    advance(now);
    std::string action = isText(body, "action") ? body["action"].get<std::string>() : "";
    if (action == "build") {
        if (buildStarted) return Reply::message(409, "The sandbox desktop is already being made.");
        if (runtime.empty()) return Reply::message(409, "Nothing runs sandboxes on this Mac yet.");
        buildStarted = now;
        // A test asks for a build that fails, to see the bridge's note.
        buildFails = body.value("simulateFailure", false);
        image = "downloading";
        imageNote.clear();
        return Reply::json(202, json{{"image", image}});
    }
    if (action == "remove") {
        bool inUse = std::any_of(sandboxes.begin(), sandboxes.end(), [](const auto& s) { return s.state == "running"; });
        if (inUse) return Reply::message(409, "A running sandbox uses the image.");
        if (image != "ready") return Reply::message(409, "There is no sandbox desktop to remove.");
        image = "missing";
        return Reply::done();
    }
    return Reply::message(400, "\"action\" is \"build\" or \"remove\".");
}

Reply SandboxState::runtimeAction(const json& body, TimePoint now) {
    advance(now);
    std::string action = isText(body, "action") ? body["action"].get<std::string>() : "";
    SimRuntime* r = isText(body, "runtime") ? find(body["runtime"].get<std::string>()) : nullptr;
    if (!r) return Reply::message(400, "\"runtime\" is \"container\" or \"docker\".");
    if (action == "install") {
        if (!r->supported) return Reply::message(409, r->why);
        if (installStarted) return Reply::message(409, "An install is already under way.");
        if (r->installed) return Reply::message(409, "It is installed already.");
        installing = r->id;
        installStarted = now;
        return Reply::done();
    }
    if (action == "use" || action == "open") {
        if (!r->installed) return Reply::message(409, "It is not installed.");
        if (action == "open" && r->id != "docker") return Reply::message(400, "Only Docker Desktop opens.");
        if (action == "use") runtime = r->id;
        if (!r->running && r->id == "docker" && !dockerOpened) dockerOpened = now;
        return Reply::done();
    }
    return Reply::message(400, "\"action\" is \"install\", \"use\" or \"open\".");
}

Reply SandboxState::setAgents(const json& body) {
    if (!body.contains("on") || !body["on"].is_boolean()) return Reply::message(400, "\"on\" is true or false.");
    for (auto& [name, on] : agents) on = body["on"].get<bool>();
    return Reply::json(200, json{{"agents", agents}});
}

} // namespace orvan::sim
