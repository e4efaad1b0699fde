#pragma once
// What a computer has of sandboxes: what runs them, the sandbox desktop's state (the words of
// SandboxImage), a download's progress, and which agents have the desktop tool.

#include "foundation/Json.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace orvan {

struct HostSandbox {
    std::optional<std::string> runtime;
    std::optional<std::string> image;
    // Share of a download done, 0 to 1.
    std::optional<double> progress;
    // Size of the base to download, in bytes.
    std::optional<std::int64_t> download;
    // The bridge's sentence on a failed image.
    std::optional<std::string> note;
    // Agent name to whether it has the desktop tool.
    std::optional<std::map<std::string, bool>> agents;

    static std::optional<HostSandbox> decode(const Json& j);
    bool operator==(const HostSandbox&) const = default;
};

} // namespace orvan
