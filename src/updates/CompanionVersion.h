#pragma once
// Dotted numeric versions: what a release says it is, and whether one is newer than another.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvan::CompanionVersion {

// "Version 1.2", or "Version 1.2 (45)" when the build number says something more; empty without a
// short version.
std::string label(const std::string& shortVersion, const std::string& build);

// The whole numbers of "1.2.0" after trimming; none for an empty text, an empty piece, anything
// but ASCII digits, or a piece beyond 64 bits.
std::optional<std::vector<std::int64_t>> parse(std::string_view text);

// Compared from the left over the longer length, a missing piece counting as 0; false when
// either doesn't parse, so "1.2" is not newer than "1.2.0".
bool isNewer(std::string_view a, std::string_view than);

} // namespace orvan::CompanionVersion
