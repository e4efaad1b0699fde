#include "access/AccessDecision.h"

namespace orvan {

AccessState AccessDecision::state(bool app, std::optional<bool> helper, bool bridgeOwned,
                                  const std::optional<std::string>& sentBy, const std::string& launch, bool back) {
    if (helper ? *helper : app) return AccessState::allowed;
    if (helper && !bridgeOwned) return AccessState::elsewhere;
    if (!sentBy) return AccessState::ask;
    if (*sentBy == launch) return back ? AccessState::reopen : AccessState::ask;
    return AccessState::stale;
}

} // namespace orvan
