#pragma once
// The words on the bridge that runs on another computer: its version, and replacing an older one
// with this Mac's.

#include <optional>
#include <string>

namespace orvan::HostBridge {

inline constexpr const char* path = "/companion/hosts/update";
inline constexpr const char* button = "Update bridge";
inline constexpr const char* warning =
    "Your iPhone loses that computer for a moment while its bridge starts again, and a direct thread working there "
    "stops.";

std::string question(const std::string& name);
std::string progress(const std::string& name);
std::string help(const std::string& mine);
// Nothing for a Terminal only computer, or for a current bridge whose version is unknown.
std::optional<std::string> line(const std::string& version, bool older, const std::string& mine, bool terminalOnly);

} // namespace orvan::HostBridge
