#include "updates/UpdatePlan.h"

#include "foundation/Text.h"
#include "updates/CompanionVersion.h"

namespace orvan {

std::optional<std::string> UpdatePlan::dismissedVersion(const std::optional<std::string>& text) {
    if (!text) return std::nullopt;
    std::string trimmed = Text::trimmed(*text);
    if (trimmed.empty()) return std::nullopt;
    if (trimmed[0] == 'v' || trimmed[0] == 'V') trimmed.erase(0, 1);
    return trimmed;
}

UpdatePlan UpdatePlan::decide(const std::string& current, const UpdateManifest& latest, const std::string& system,
                              const std::optional<std::string>& dismissed, bool manual) {
    if (!CompanionVersion::isNewer(latest.version, current)) return {Kind::current, {}, {}};
    if (!latest.minimumMacOS.empty() && CompanionVersion::isNewer(latest.minimumMacOS, system))
        return {Kind::unsupported, latest.version, latest.minimumMacOS};
    // A manual check asks again even about a release turned down before.
    if (manual) return {Kind::prompt, latest.version, {}};
    if (dismissedVersion(dismissed) == latest.version) return {Kind::quiet, latest.version, {}};
    return {Kind::prompt, latest.version, {}};
}

} // namespace orvan
