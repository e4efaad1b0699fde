#pragma once
// The shared key that every local request must carry, kept in local.key in the data folder.

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace orvan::sim {

using Environment = std::map<std::string, std::string>;

namespace KeyFile {
// ORVAN_DIR, else its earlier name TULM_MOBILE_DIR (empty values count as unset), else the
// user's data folder "Orvan".
std::filesystem::path folder(const Environment& environment);

// The key in the folder's local.key, made with a random value when there is none. Absent, with a
// sentence in `problem`, when the folder or the file can't be made or read.
std::optional<std::string> ensure(const std::filesystem::path& folder, std::string& problem);
} // namespace KeyFile

} // namespace orvan::sim
