#pragma once
// What to do about a release: ask, stay quiet, say the system is too old, or nothing.

#include "updates/UpdateManifest.h"

#include <optional>
#include <string>

namespace orvan {

struct UpdatePlan {
    enum class Kind { prompt, quiet, unsupported, current };
    Kind kind = Kind::current;
    std::string version;
    std::string minimum; // only for `unsupported`
    bool operator==(const UpdatePlan&) const = default;

    // "v1.3" and " 1.3 " name the release "1.3"; empty names none.
    static std::optional<std::string> dismissedVersion(const std::optional<std::string>& text);
    static UpdatePlan decide(const std::string& current, const UpdateManifest& latest, const std::string& system,
                             const std::optional<std::string>& dismissed, bool manual);
};

} // namespace orvan
