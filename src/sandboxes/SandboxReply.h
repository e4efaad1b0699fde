#pragma once
// The bridge's whole account of sandboxes on this computer, in one read. Every key may be missing,
// and a missing one stands for its empty value; a key of the wrong type rejects the whole answer,
// so a half-understood reply never overwrites a good one.

#include "sandboxes/CompanionSandbox.h"
#include "sandboxes/RuntimeChoice.h"
#include "sandboxes/RuntimeInstall.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace orvan {

struct SandboxReply {
    std::vector<CompanionSandbox> sandboxes;
    std::string runtime;
    std::string service;
    std::string docker;
    std::string image;
    double progress = 0;
    std::int64_t download = 0;
    std::string note;
    std::map<std::string, bool> agents;
    std::vector<RuntimeChoice> choices;
    // Absent also when the bridge sent one without the runtime it installs.
    std::optional<RuntimeInstall> install;

    static std::optional<SandboxReply> decode(const Json& j);
};

} // namespace orvan
