#include "bridge/EnvironmentWords.h"

namespace orvan {

namespace {
bool isSide(const std::string& side) { return side == "left" || side == "right"; }
} // namespace

bool EnvironmentWords::tulmShown(const std::optional<std::string>& tulm, const std::string& side) {
    if (tulm) return !tulm->empty() && *tulm != "absent";
    return isSide(side);
}

std::optional<std::string> EnvironmentWords::tulmLine(const std::optional<std::string>& tulm) {
    if (!tulm) return std::nullopt;
    if (*tulm == "up") return "Open and signed in";
    if (*tulm == "closed") return "Tulm is closed";
    if (*tulm == "signed-out") return "Signed out of Tulm";
    return std::nullopt;
}

bool SidebarRow::shown(const std::optional<std::string>& tulm, const std::string& side) {
    if (!isSide(side)) return false;
    return !tulm || *tulm == "up" || *tulm == "signed-out";
}

} // namespace orvan
