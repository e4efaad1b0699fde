#pragma once
// The bridge's list of direct-thread folders: its paths, bodies, decoding and words.

#include "access/ThreadFolder.h"
#include "foundation/Json.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvan::ThreadFolders {

inline constexpr const char* path = "/companion/acp/projects";
inline constexpr const char* removePath = "/companion/acp/projects/remove";

inline Json add(const std::string& folder) { return Json{{"path", folder}}; }
inline Json remove(const std::string& id) { return Json{{"id", id}}; }

// The list under `projects`; a missing key is the empty list, a body that doesn't decode is nothing.
std::optional<std::vector<ThreadFolder>> list(std::string_view data);

// The name, or the path's last component when there is no name.
std::string title(const ThreadFolder& folder);

inline constexpr const char* about =
    "The folders your iPhone can start a direct thread in. A direct thread runs its agent in the folder, on the "
    "agent's own login on this Mac or on one of your accounts. Your iPhone's New thread adds folders too.";
inline constexpr const char* empty = "No folder yet. Add one, and your iPhone can start a direct thread in it.";
inline constexpr const char* noThreads = "This Mac's bridge does not run direct threads.";
inline constexpr const char* notAdded = "That folder was not added.";
inline constexpr const char* notRemoved = "That folder was not removed.";
inline constexpr const char* addTitle = "Add a folder…";
inline constexpr const char* addHelp = "Pick a folder in Finder. Your iPhone can then start a direct thread in it.";
inline constexpr const char* pickerMessage = "Choose a folder your iPhone can start a direct thread in.";
inline constexpr const char* removeTitle = "Remove";
inline constexpr const char* removeHelp = "Takes the folder off the list your iPhone offers. Nothing in it is touched.";
inline constexpr const char* removeQuestion = "Remove this folder?";
inline constexpr const char* sectionTitle = "Folders";
// Where no chooser can be shown, the folder is typed.
inline constexpr const char* pathField = "Folder path";

// The question's message. A folder known only by its path is named with the home folder shortened.
std::string removal(const ThreadFolder& folder, const std::filesystem::path& userHome);

} // namespace orvan::ThreadFolders
