#pragma once
// The answer of the accounts list: rows, fallback chain, found logins and AWS profiles. A key that
// is missing or not a list gives an empty list; a bad row is dropped alone.

#include "accounts/CompanionAccount.h"
#include "accounts/FoundLogin.h"

#include <string>
#include <vector>

namespace orvan {

struct AccountsList {
    std::vector<CompanionAccount> accounts;
    std::vector<std::string> chain;
    bool autoSwitch = false;
    std::vector<FoundLogin> found;
    std::vector<std::string> awsProfiles;

    bool operator==(const AccountsList&) const = default;
    // Fails only for a value that isn't an object.
    static std::optional<AccountsList> decode(const Json& j);
};

} // namespace orvan
