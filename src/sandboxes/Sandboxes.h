#pragma once
// This computer's sandboxes as the bridge runs them: the list, the shared image, what runs them and
// desktop mode for the agents. The section that shows it keeps it fresh with `poll`.

#include "foundation/Async.h"
#include "foundation/Carryover.h"
#include "foundation/Observable.h"
#include "platform/LocalApi.h"
#include "sandboxes/CompanionSandbox.h"
#include "sandboxes/RuntimeChoice.h"
#include "sandboxes/RuntimeInstall.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace orvan {

class Sandboxes final : public Observable {
public:
    Sandboxes(LocalApi& api, Clock& clock, Environment environment);
    ~Sandboxes() override;

    // Published fields, in their declared order.
    std::vector<CompanionSandbox> list;
    std::string runtime;
    std::string service;
    std::string docker;
    std::string image;
    double progress = 0;
    std::int64_t download = 0;
    std::string imageNote;
    std::map<std::string, bool> agents;
    std::vector<RuntimeChoice> choices;
    std::optional<RuntimeInstall> install;
    bool busy = false;
    std::string note;
    bool loaded = false;

    // An install runs in the bridge and has not ended.
    bool installing() const;
    // How long the poll waits before its next read: short while something is under way.
    Duration period() const;

    Task<void> refresh();
    Task<void> stop(std::string session, bool discard);
    // The image and the runtime are fields too, so their operations say what they do.
    // "build" or "remove".
    Task<void> changeImage(std::string action);
    // "install", "use" or "open", for a choice's id.
    Task<void> changeRuntime(std::string action, std::string runtime);
    Task<void> setAgents(bool on);

    // Reads at once, then again after each period, until `cancel` (or the model's end).
    Task<void> poll(Cancel cancel);

private:
    Task<HttpAnswer> send(std::string path, std::optional<Json> body, Duration timeout);
    // An operation that set work going wakes the poll from a long nap, so the work is followed at once.
    void quickenPoll();

    // The poll's current sleep and its length, while it sleeps.
    std::optional<Cancel> nap_;
    Duration napLength_{};

    LocalApi& api_;
    Clock& clock_;
    Environment environment_;
    Cancel alive_;
};

} // namespace orvan
