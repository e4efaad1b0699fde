#pragma once
// Small per-user files: written whole and atomically, private to the user, and read without
// ever failing (missing or unreadable is simply absent).

#include "foundation/Carryover.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace orvan {

namespace Files {
// Makes the folder, writes a temporary file beside the target, renames it in, then sets 0600.
// Answers whether the file is in place; a failure leaves no temporary file and is otherwise dropped.
bool write(const std::filesystem::path& path, std::string_view bytes);
// Makes the folder and any missing folders above it, each 0700; answers whether it is there now.
bool makeFolder(const std::filesystem::path& folder);
// The whole file, or absent when it is missing or can't be read.
std::optional<std::string> read(const std::filesystem::path& path);
} // namespace Files

namespace DataFolder {
// $XDG_DATA_HOME, else ~/.local/share.
std::filesystem::path dataHome(const Environment& environment);
// Where the program's small files live: <data home>/Orvan.
std::filesystem::path standard(const Environment& environment);
// The folder of the program's earlier name: <data home>/tulm-mobile.
std::filesystem::path earlier(const Environment& environment);
// The bridge's folder, which holds local.key: ORVAN_DIR (or its old name), else the standard folder.
std::filesystem::path bridge(const Environment& environment);
// $XDG_CONFIG_HOME, else ~/.config.
std::filesystem::path configHome(const Environment& environment);
} // namespace DataFolder

} // namespace orvan
