#pragma once
// Which of the five answers holds for one grant. The helper's word, when it speaks, overrides
// what the companion's own process can do: the helper is the one that captures and types.

#include "access/AccessKind.h"

#include <optional>
#include <string>

namespace orvan::AccessDecision {

AccessState state(bool app, std::optional<bool> helper, bool bridgeOwned, const std::optional<std::string>& sentBy,
                  const std::string& launch, bool back);

} // namespace orvan::AccessDecision
