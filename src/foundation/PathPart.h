#pragma once
#include <string>
#include <string_view>

namespace orvan::PathPart {
// Percent-encodes every byte but the unreserved characters (A-Z a-z 0-9 - . _ ~), so any id
// can stand as one segment of a local path.
std::string escape(std::string_view id);
} // namespace orvan::PathPart
