#pragma once
// What the simulator has been told to do wrong, path by path, so that every failure the companion
// knows how to word can be produced on demand. Not thread-safe: the server guards it.

#include <map>
#include <optional>
#include <string>

namespace orvan::sim {

struct Fault {
    std::optional<int> failStatus;
    std::string failBody;
    double slowSeconds = 0;
    bool garbage = false;
    bool wrongType = false;
    bool drop = false;

    bool any() const { return failStatus || slowSeconds > 0 || garbage || wrongType || drop; }
};

class Misbehaviour {
public:
    // The body used when a failure is asked for without one.
    static std::string defaultFailBody();

    // "*" stands for every path the bridge serves; the control paths are never affected.
    static constexpr const char* everyPath = "*";

    void fail(const std::string& path, int status, std::string body) {
        rules_[path].failStatus = status;
        rules_[path].failBody = std::move(body);
    }
    void slow(const std::string& path, double seconds) { rules_[path].slowSeconds = seconds; }
    void garbage(const std::string& path) { rules_[path].garbage = true; }
    void wrongType(const std::string& path) { rules_[path].wrongType = true; }
    void drop(const std::string& path) { rules_[path].drop = true; }
    void clear(const std::string& path) { rules_.erase(path); }
    void clear() { *this = Misbehaviour{}; }

    bool refuseEveryKey = false;
    bool noHealthz = false;

    // The faults for one path: its own rule, with what "*" adds.
    Fault faultFor(const std::string& path) const;

private:
    std::map<std::string, Fault> rules_;
};

} // namespace orvan::sim
