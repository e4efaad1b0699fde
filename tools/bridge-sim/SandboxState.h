#pragma once
// This computer's sandboxes as the simulator keeps them: a few sessions' sandboxes, the shared
// desktop image that a build fetches step by step over some seconds, the two runtimes with an
// install that steps through its stages, and the agents' desktop mode. Time moves the long work
// along: each answer reads the state at `now`. Not thread-safe: the server holds its lock.

#include "Reply.h"
#include "Rfc3339.h"

#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace orvan::sim {

struct SimSandbox {
    std::string session;
    std::string state;
    bool keep = false;
    std::vector<std::string> watching;
    std::string reason;
};

struct SimRuntime {
    std::string id;
    bool supported = true;
    std::string why;
    bool installed = false;
    bool running = false;
    bool recommended = false;
    std::int64_t size = 0;
};

struct SandboxState {
    // How long each stage of an image build and a runtime install lasts, in seconds.
    static constexpr double downloadSeconds = 5.0;
    static constexpr double stageSeconds = 1.5;
    static constexpr std::int64_t baseBytes = 850'000'000;

    std::vector<SimSandbox> sandboxes;
    std::vector<SimRuntime> runtimes;
    std::string runtime;
    // When Docker Desktop's engine was asked to open; it runs a few seconds later.
    std::optional<TimePoint> dockerOpened;
    std::string image = "missing";
    std::string imageNote;
    std::optional<TimePoint> buildStarted;
    // Asked for by a test: the build stops at Chrome with a note.
    bool buildFails = false;
    std::string installing;
    std::optional<TimePoint> installStarted;
    std::map<std::string, bool> agents;
    // When each read came, for tests of the companion's polling pace.
    std::vector<double> readTimes;
    std::optional<TimePoint> started;

    // `bare`: a computer where nothing runs sandboxes yet and no sandbox was ever made.
    static SandboxState seeded(bool bare = false);

    // `counted`: the read goes into `readTimes`, as the companion's do.
    nlohmann::json read(TimePoint now, bool counted = true);
    Reply stop(const nlohmann::json& body, TimePoint now);
    Reply changeImage(const nlohmann::json& body, TimePoint now);
    Reply runtimeAction(const nlohmann::json& body, TimePoint now);
    Reply setAgents(const nlohmann::json& body);

private:
    void advance(TimePoint now);
    SimRuntime* find(const std::string& id);
    nlohmann::json installJson(TimePoint now) const;
};

} // namespace orvan::sim
