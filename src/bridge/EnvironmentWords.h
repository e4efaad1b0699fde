#pragma once
#include <optional>
#include <string>

namespace orvan::EnvironmentWords {

inline const std::string direct = "Orvan";
inline const std::string directLine = "Agents Orvan runs directly";
inline const std::string tulm = "Tulm";

// Whether the sibling program's row shows. A side remembered from an older bridge keeps it on.
bool tulmShown(const std::optional<std::string>& tulm, const std::string& side);
std::optional<std::string> tulmLine(const std::optional<std::string>& tulm);

} // namespace orvan::EnvironmentWords

namespace orvan::SidebarRow {
// Whether the side picker shows: only with a known side, and only while the program can move it.
bool shown(const std::optional<std::string>& tulm, const std::string& side);
} // namespace orvan::SidebarRow
