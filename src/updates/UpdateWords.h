#pragma once
// The Updates section's own words.

#include <string>

namespace orvan::UpdateWords {

inline constexpr const char* section = "Updates";
inline constexpr const char* checking = "Checking for updates…";
inline constexpr const char* checkingQuietly = "Checking on its own…";
inline constexpr const char* latest = "This is the latest version.";
inline constexpr const char* latestQuietly = "Checked on its own. This is the latest version.";
inline constexpr const char* sectionHelp = "A newer release asks on its own, about every four hours. Check now looks right away.";
inline constexpr const char* update = "Update";
inline constexpr const char* updateHelp = "Installs the newer version and reopens the companion. Phones disconnect for a moment.";
inline constexpr const char* checkNow = "Check now";
inline constexpr const char* checkNowHelp = "Looks for a newer version on the Orvan download server now.";
inline constexpr const char* notNow = "Not now";
inline constexpr const char* menuItem = "Check for updates";
inline constexpr const char* noTarget =
    "This window is open from a disk image. Drag Orvan Companion into Applications, quit this window, and open the "
    "copy in Applications. Then choose Update.";
inline constexpr const char* downloading = "Downloading the update…";
inline constexpr const char* downloadingElsewhere = "Downloading the update into Applications…";
inline constexpr const char* asking = "macOS is asking for an administrator password to replace Orvan Companion.";
inline constexpr const char* installing = "Installing the update. Orvan Companion will reopen.";
inline constexpr const char* installingElsewhere =
    "Installing the update into Applications. Orvan Companion will reopen from there.";
// A copy the Debian package put in place is the package manager's to change.
inline constexpr const char* packaged =
    "This copy came from the Debian package, so the package manager installs the newer version. Nothing was replaced.";

inline std::string ready(const std::string& version) { return "Version " + version + " is ready."; }
inline std::string readyFromPackages(const std::string& version) {
    return "Version " + version + " is ready. This copy came from the Debian package, so the package manager installs it.";
}
inline std::string unsupported(const std::string& version, const std::string& minimum) {
    return "Version " + version + " needs macOS " + minimum + " or later. This Mac stays on this version.";
}
inline std::string prompt(const std::string& version) {
    return "Version " + version + " replaces this copy. Phones disconnect for a moment, then the companion reopens.";
}

} // namespace orvan::UpdateWords
