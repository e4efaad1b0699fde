#pragma once
// What a test found on a computer before anything was added: its system, its host key, and what
// it already has.

#include "foundation/Json.h"

#include <optional>
#include <string>
#include <vector>

namespace orvan {

struct ComputerFound {
    std::string os;
    std::string arch;
    // Empty when no key could be read.
    std::string fingerprint;
    std::vector<std::string> agents;
    std::optional<bool> node;
    // That computer already runs its own companion.
    bool companion = false;
    // This Mac hasn't seen the host key: it must be trusted before anything else goes there.
    std::optional<bool> confirm;
    std::optional<std::string> docker;
    std::optional<bool> sudoFree;

    static std::optional<ComputerFound> decode(const Json& j);
    bool operator==(const ComputerFound&) const = default;
};

} // namespace orvan
