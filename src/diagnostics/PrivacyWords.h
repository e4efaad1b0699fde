#pragma once
// What the owner reads about the sending switch, in the consent sheet and the Privacy section.

#include <array>

namespace orvan::PrivacyWords {

inline constexpr const char* toggle = "Send feedback and crash reports to the developer";

inline constexpr std::array<const char*, 5> lines = {
    "Send feedback, in the menu bar menu, sends what you write, the pictures you add and, unless you turn them off, "
    "diagnostics: the companion's version, macOS, this Mac's model and the Orvan version of each computer it added. "
    "You see all of it before it goes, and it goes only when you choose Send.",
    "It never sends secrets, keys, prompts, file contents, file paths, repository names or account labels.",
    "Crash and hang reports go on their own when the companion, its bridge or an agent it runs crashes or freezes: "
    "where in the code that happened, with the companion's version, macOS and this Mac's model, and for an agent, "
    "the last error line it printed with paths, keys and addresses taken out.",
    "Error counts come in a later update. This same switch will cover them, and Orvan Companion will ask you again "
    "before they start.",
    "Reports go through the Orvan relay to the developer's issue tracker, Linear. Off, Orvan sends nothing itself, "
    "and Send feedback offers Mail instead.",
};

inline constexpr const char* sheetLead = "Orvan Companion can send what you report to its developer, so it gets fixed.";
inline constexpr const char* sheetLater = "Change this any time under Privacy in Orvan Companion.";
inline constexpr const char* sheetContinue = "Continue";
inline constexpr const char* sectionTitle = "Privacy";

} // namespace orvan::PrivacyWords
