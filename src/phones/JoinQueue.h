#pragma once
// Which reads of the waiting requests bring the join window forward. A window the owner closed
// stays closed until something about the requests changes.

#include "phones/JoinRequest.h"

#include <set>
#include <string>
#include <vector>

namespace orvan {

enum class JoinStep { open, close, stay };

struct JoinQueue {
    std::set<std::string> seen;

    // Open for a request not seen before (a changed code counts as new), close once the last
    // request is gone, stay otherwise; what was read is remembered.
    JoinStep take(const std::vector<JoinRequest>& joins);
};

} // namespace orvan
