#pragma once
// Whether the program may open the folders that files from the phone go to: who asked last, what
// each folder's row says, which button the section offers and the sentence under it.

#include "access/FilesAsked.h"
#include "access/FolderAccess.h"

#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvan::FilesAccess {

enum class Stage { notAsked, asked, askAgain };

struct Row {
    std::string name;
    std::string state;
    bool allowed = false;
    bool operator==(const Row&) const = default;
};

enum class Button { none, ask, askAgain, openSettings };

inline constexpr std::array<const char*, 3> folders = {"Downloads", "Desktop", "Documents"};
inline constexpr const char* path = "/companion/folders";
inline constexpr const char* filesAndFolders =
    "x-apple.systempreferences:com.apple.preference.security?Privacy_FilesAndFolders";
inline constexpr const char* fullDisk = "x-apple.systempreferences:com.apple.preference.security?Privacy_AllFiles";

inline constexpr const char* about =
    "Your iPhone sends files to this Mac's folders and fetches its newest ones. macOS asks before Orvan Companion "
    "opens Downloads, Desktop and Documents. Allow them here, once, so a question never stops an upload.";
inline constexpr const char* fullDiskAbout =
    "Optional. Full Disk Access lets the agents Orvan starts read every file on this Mac, mail and messages among "
    "them, not just these folders. Turn it on only if you want that.";
inline constexpr const char* allowed =
    "macOS lets Orvan Companion open these folders, so files from your iPhone go in without a question.";
inline constexpr const char* againNote =
    "This copy of Orvan Companion is signed differently from the one you allowed, so macOS asks once more for each "
    "folder. Ask again while you are at the Mac.";
inline constexpr const char* refusedNote =
    "macOS remembers a folder you did not allow and does not ask again. Turn Orvan Companion on for it in System "
    "Settings, Privacy & Security, Files and Folders.";
inline constexpr const char* fullDiskConfirm =
    "With Full Disk Access, the agents Orvan starts could read every file on this Mac. Turn on Orvan Companion in "
    "the list only if you want that.";
inline constexpr const char* asking = "macOS asks about each folder in turn. Choose Allow for each.";

inline constexpr const char* sectionTitle = "Files";
inline constexpr const char* askTitle = "Allow the Folders";
inline constexpr const char* askAgainTitle = "Ask again";
inline constexpr const char* openSettingsTitle = "Open Settings";
inline constexpr const char* askHelp = "macOS asks about Downloads, Desktop and Documents in turn. Choose Allow for each.";
inline constexpr const char* settingsHelp =
    "Opens System Settings at Files and Folders. Turn on each folder under Orvan Companion.";
inline constexpr const char* fullDiskTitle = "Full Disk Access…";
inline constexpr const char* fullDiskOpen = "Open System Settings";

// The report under `folders`; bad rows are stepped over; a body that doesn't decode is nothing.
std::optional<std::vector<FolderAccess>> list(std::string_view data);

Stage stage(const std::optional<std::string>& team, const std::string& bundle, const std::optional<FilesAsked>& asked);
std::vector<Row> rows(Stage stage, const std::optional<std::vector<FolderAccess>>& answer);
Button button(Stage stage, const std::optional<std::vector<FolderAccess>>& answer);
std::string note(Stage stage, const std::optional<std::vector<FolderAccess>>& answer);
// What this program can tell by itself: each folder under the home, allowed. It stands in when the
// bridge is older than its report.
std::vector<FolderAccess> touched(const std::filesystem::path& home);

} // namespace orvan::FilesAccess
