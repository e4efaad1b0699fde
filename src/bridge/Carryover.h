#pragma once
// Bringing over what the program kept under its earlier name: the data folder, the settings domain
// and the login entry. All of it runs at launch, so none of it may stop the program: every failure
// leaves things where they were and says nothing.

#include "foundation/Carryover.h"
#include "foundation/UserDefaults.h"

#include <filesystem>
#include <functional>
#include <string>

namespace orvan::Carryover {

// The settings domain of the earlier name, and this program's own.
inline constexpr const char* oldBundle = "tulm.companion";
inline constexpr const char* bundle = ORVAN_BUNDLE_ID;
// The data folder's name under the earlier name, and now.
inline constexpr const char* oldFolder = "tulm-mobile";
inline constexpr const char* folder = "Orvan";
// Set once the login entry needs no more carrying over: by the carry-over itself or by the user's choice.
inline constexpr const char* loginSettledKey = "loginSettled";

// Moves <in>/tulm-mobile to <in>/Orvan and leaves a link behind for older tools. Never merges: an
// existing new folder, or anything but a real folder at the old place, leaves both untouched.
void moveFolder(const std::filesystem::path& in);

// Fills the empty domain `into` with a copy of the domain `from`; answers whether it did.
bool copySettings(const std::string& from, const std::string& into, const Environment& environment);

// Registers the login entry once when a launch at login shows the earlier name had one. `registerItem`
// answers whether it worked; its error is dropped. Answers whether it registered.
bool carryLogin(bool launchedAtLogin, bool enabled, UserDefaults& defaults,
                const std::function<bool(std::string& error)>& registerItem);

} // namespace orvan::Carryover
