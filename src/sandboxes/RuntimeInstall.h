#pragma once
// The install of a runtime that the bridge is carrying out, step by step.

#include "foundation/Json.h"

#include <optional>
#include <string>

namespace orvan {

struct RuntimeInstall {
    // The choice's id being installed.
    std::optional<std::string> runtime;
    // "downloading", "checking", "installing", "starting", "done" or "failed".
    std::optional<std::string> step;
    // Share of the download, 0 to 1.
    std::optional<double> progress;
    // The bridge's own words for the step, or why it failed.
    std::optional<std::string> note;

    static std::optional<RuntimeInstall> decode(const Json& j);
    bool operator==(const RuntimeInstall&) const = default;
};

} // namespace orvan
