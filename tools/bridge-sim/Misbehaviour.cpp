#include "Misbehaviour.h"

#include <algorithm>

namespace orvan::sim {

std::string Misbehaviour::defaultFailBody() {
    return R"({"message":"The bridge simulator was told to fail here."})";
}

Fault Misbehaviour::faultFor(const std::string& path) const {
    Fault fault;
    auto own = rules_.find(path);
    auto every = rules_.find(everyPath);
    for (auto it : {every, own}) {
        if (it == rules_.end()) continue;
        const Fault& rule = it->second;
        // The path's own failure wins over the one for every path.
        if (rule.failStatus) {
            fault.failStatus = rule.failStatus;
            fault.failBody = rule.failBody;
        }
        fault.slowSeconds = std::max(fault.slowSeconds, rule.slowSeconds);
        fault.garbage = fault.garbage || rule.garbage;
        fault.wrongType = fault.wrongType || rule.wrongType;
        fault.drop = fault.drop || rule.drop;
    }
    return fault;
}

} // namespace orvan::sim
