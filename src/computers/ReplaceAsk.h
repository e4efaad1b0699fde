#pragma once
// The question a copy asks when a sign-in is already there: nothing was copied for those accounts,
// and replacing waits for the owner's word.

#include "accounts/CompanionAccount.h"
#include "computers/AccountCopy.h"

#include <optional>
#include <string>
#include <vector>

namespace orvan {

struct ReplaceAsk {
    std::string target;
    std::vector<std::string> ids;
    std::string question;

    // A new question is a new sheet.
    std::string id() const;
    bool operator==(const ReplaceAsk&) const = default;

    static constexpr const char* message =
        "Nothing was copied for it yet. Replace takes the sign-in there off that computer and puts this one in its "
        "place.";

    static std::optional<ReplaceAsk> from(const std::string& target, const std::string& computer,
                                          const AccountCopy::Answer& answer, const std::vector<CompanionAccount>& accounts);
};

} // namespace orvan
