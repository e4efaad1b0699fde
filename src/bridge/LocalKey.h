#pragma once
#include "foundation/Carryover.h"

#include <string>

namespace orvan::LocalKey {
// The shared key from local.key in the bridge's folder, trimmed. Read anew on every call and
// never kept: the bridge may write a new one at any time. Empty when the file can't be read.
std::string value(const Environment& environment);
std::string value();
} // namespace orvan::LocalKey
