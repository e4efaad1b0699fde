#pragma once
// The bridge's state and what each endpoint does to it. Not thread-safe: the server holds one lock
// around every call. Inputs are the parsed request bodies; outputs are whole answers.

#include "Reply.h"
#include "Rfc3339.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace orvan::sim {

struct Phone {
    std::string id;
    std::optional<std::string> name;
    std::string role; // "owner", "member" or "guest"; a phone may also send a role of its own
    std::optional<std::string> ownerSince;
    // A guest's scope as phones were told it: projects, sessions, mode, ends.
    std::optional<nlohmann::json> guest;
};

struct Watcher {
    std::string name;
    std::optional<TimePoint> leaves;
};

struct Screen {
    bool available = true;
    bool on = false;
    bool phoneFirst = false;
    std::vector<Watcher> watching;
    std::optional<std::string> control;
    bool mayCapture = true;
    bool mayControl = true;
};

struct State {
    std::string name;
    bool on = false;
    std::optional<std::string> lineOverride;
    std::vector<Phone> phones;
    std::optional<std::string> sidebar;
    std::optional<std::string> tulm;
    Screen screen;
    bool diagnostics = false;
    bool diagnosticsAnswered = false;
    // Leaves guests' scopes out of the status, as older bridges did; /local/devices still has them.
    bool leanStatus = false;
    int nextPhone = 1;

    // Reads. Watchers whose time is up have left by then.
    nlohmann::json status(TimePoint now);
    nlohmann::json devices(TimePoint now);
    std::string line() const;

    // The companion's writes.
    Reply setName(const nlohmann::json& body);
    Reply setRemote(const nlohmann::json& body);
    Reply setSidebar(const nlohmann::json& body);
    Reply setScreen(const nlohmann::json& body);
    Reply stopScreen();
    Reply removePhone(const nlohmann::json& body);
    Reply setRole(const nlohmann::json& body, TimePoint now);
    Reply extendGuest(const nlohmann::json& body);
    Reply setDiagnostics(const nlohmann::json& body);

    // What the phones and the world do, on a test's request.
    Reply addPhone(const nlohmann::json& body, TimePoint now);
    Reply addWatcher(const nlohmann::json& body, TimePoint now);
    Reply set(const nlohmann::json& body);

private:
    Phone* find(const std::string& id);
    void letWatchersGo(TimePoint now);
    nlohmann::json phoneJson(const Phone& phone, bool withScope) const;
};

} // namespace orvan::sim
