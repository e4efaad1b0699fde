#include "updates/CompanionVersion.h"

namespace orvan {

std::string CompanionVersion::label(const std::string& shortVersion, const std::string& build) {
    if (shortVersion.empty()) return {};
    if (!build.empty() && build != shortVersion) return "Version " + shortVersion + " (" + build + ")";
    return "Version " + shortVersion;
}

} // namespace orvan
