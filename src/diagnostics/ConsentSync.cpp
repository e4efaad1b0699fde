#include "diagnostics/ConsentSync.h"

namespace orvan {

std::optional<bool> ConsentSync::say(std::optional<bool> bridge, bool owner, bool refused,
                                     std::optional<bool> bridgeAnswered) {
    if (!bridge) return std::nullopt;
    if (*bridge != owner) return owner;
    if (owner) return std::nullopt;
    // Both off: a refusal the bridge hasn't recorded as an answer is told again, so it knows.
    if (refused && bridgeAnswered == false) return false;
    return std::nullopt;
}

} // namespace orvan
