#pragma once
// Where an account's login lives, and how to say so with the home folder as "~".

#include "accounts/CompanionAccount.h"
#include "foundation/Carryover.h"

#include <string>

namespace orvan::AccountHome {

// ORVAN_DIR (or its earlier name), standardised; else the data folder under the user's home.
std::string bridgeFolder(const Environment& environment, const std::string& userHome);
std::string tilde(const std::string& path, const std::string& userHome);
// The folder a login row names, or "Default login (<place>)" for a provider's own login.
std::string line(const CompanionAccount& account, const std::string& userHome);
// Whether the bridge made this login's folder (and so deletes it with the account).
bool made(const CompanionAccount& account, const std::string& accountsFolder);

} // namespace orvan::AccountHome
