#include "phones/JoinQueue.h"

#include <algorithm>

namespace orvan {

JoinStep JoinQueue::take(const std::vector<JoinRequest>& joins) {
    std::set<std::string> keys;
    for (const auto& join : joins) keys.insert(join.shown());
    JoinStep step = JoinStep::stay;
    if (std::any_of(keys.begin(), keys.end(), [&](const std::string& k) { return !seen.contains(k); }))
        step = JoinStep::open;
    else if (keys.empty() && !seen.empty())
        step = JoinStep::close;
    seen = std::move(keys);
    return step;
}

} // namespace orvan
