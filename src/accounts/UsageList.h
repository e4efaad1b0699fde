#pragma once
// The answer of the usage read: the accounts' use, and the use of this computer's default logins.

#include "accounts/LoginUsage.h"

#include <string>
#include <vector>

namespace orvan {

struct UsageList {
    std::vector<LoginUsage> accounts;
    std::vector<LoginUsage> defaults;

    bool operator==(const UsageList&) const = default;

    // From `accounts`, else from `defaults`, else the empty record.
    const LoginUsage& usage(const std::string& id) const;
    static std::string path(bool fresh);
    // Lenient throughout; within each list the first row with an id stands.
    static std::optional<UsageList> decode(const Json& j);
};

} // namespace orvan
