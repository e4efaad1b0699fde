#pragma once
#include <string>

namespace orvan::CompanionVersion {

// "Version 1.2", or "Version 1.2 (45)" when the build number says something more; empty without a
// short version.
std::string label(const std::string& shortVersion, const std::string& build);

} // namespace orvan::CompanionVersion
