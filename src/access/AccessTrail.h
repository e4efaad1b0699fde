#pragma once
// The memory of asking: which launch last sent the owner to allow each grant, and whether the
// owner has left the program and come back since. A grant asked for here takes effect only after
// a restart, so "came back" is the moment to offer one.

#include "access/AccessKind.h"

#include <map>
#include <optional>
#include <set>
#include <string>

namespace orvan {

struct AccessTrail {
    std::string launch;
    std::map<AccessKind, std::string> sent;
    std::set<AccessKind> away;
    std::set<AccessKind> back;

    // A trail for a new launch, with a fresh id.
    static AccessTrail fresh();

    void asked(AccessKind kind);
    void resigned();
    void activated();
    // Forgets the asking for a kind that is allowed now; answers whether there was any.
    bool settle(AccessKind kind);
    std::map<std::string, std::string> saved() const;
    static std::map<AccessKind, std::string> marks(const std::optional<std::map<std::string, std::string>>& saved);
    AccessState state(AccessKind kind, bool app, std::optional<bool> helper, bool bridgeOwned) const;
};

} // namespace orvan
