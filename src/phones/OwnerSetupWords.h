#pragma once
// The words of owner setup.

#include "accounts/AccountWords.h"
#include "phones/OwnerSetupProblem.h"

#include <string>

namespace orvan::OwnerSetupWords {

inline constexpr const char* button = "Set up this Mac's owner\u2026";
inline constexpr const char* buttonHelp =
    "Shows a code the iPhone or iPad that will own this Mac scans. Only while this Mac has no owner.";
inline constexpr const char* title = "Set up this Mac's owner";
inline constexpr const char* scan = "On the iPhone or iPad that will own this Mac, open the Camera and point it at "
                                    "this code, then tap the link.";
inline constexpr const char* once =
    "It works once. Whoever uses it first becomes this Mac's owner, so show it only to that phone.";
inline constexpr const char* making = "Making a code\u2026";
inline constexpr const char* over = "This code is over. Make a new one when the phone is ready.";
inline constexpr const char* added = "Owner added.";
inline constexpr const char* ending = "Ending the code\u2026";
inline constexpr const char* stillLive = "The code still works. Trying again to end it\u2026";
inline constexpr const char* notMade = "This Mac did not make a code.";
inline constexpr const char* notRead = "The code was made, but its picture could not be read.";
inline constexpr const char* newCode = "Make a new code";
inline constexpr const char* tryAgain = "Try again";
inline constexpr const char* close = "Close";
inline constexpr const char* pictureLabel = "Setup code";

// "Works until <time>.", the time alone in the place's short style.
std::string until(TimePoint date, const AccountWords::Place& place);
std::string problem(const OwnerSetupProblem& problem);

} // namespace orvan::OwnerSetupWords
