#pragma once
// One thing that can run sandboxes on this computer, and where it stands here.

#include "foundation/Json.h"

#include <cstdint>
#include <optional>
#include <string>

namespace orvan {

struct RuntimeChoice {
    // "container" or "docker".
    std::string id;
    bool supported = false;
    // Why it cannot run here.
    std::optional<std::string> why;
    bool installed = false;
    // Its service or engine runs.
    bool running = false;
    bool recommended = false;
    // Sandboxes use this one.
    bool chosen = false;
    // Its download, in bytes.
    std::optional<std::int64_t> size;

    static std::optional<RuntimeChoice> decode(const Json& j);
    bool operator==(const RuntimeChoice&) const = default;
};

} // namespace orvan
