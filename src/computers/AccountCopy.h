#pragma once
// Which of this computer's accounts may go to another computer, how each is told on the way, and
// the bridge's answer row by row. A Claude login goes only as a long-lived token, so that neither
// computer signs the other out.

#include "accounts/CompanionAccount.h"
#include "foundation/Json.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace orvan::AccountCopy {

struct Result {
    std::string id;
    bool copied = false;
    std::optional<std::string> code;
    std::optional<std::string> message;

    bool needsToken() const { return code == std::string("needs_token"); }
    bool waitsToReplace() const { return code == std::string("replaces_login"); }
    bool operator==(const Result&) const = default;
    static std::optional<Result> decode(const Json& j);
};

struct Answer {
    std::vector<std::string> steps;
    std::vector<Result> results;
    std::optional<std::string> message;

    // The ids that wait for the owner's word before a sign-in there is replaced, in order.
    std::vector<std::string> waiting() const;
    static std::optional<Answer> decode(const Json& j);
};

bool needsToken(const CompanionAccount& account);
std::vector<CompanionAccount> choosable(const std::vector<CompanionAccount>& accounts);
std::vector<std::string> request(const std::set<std::string>& chosen, const std::vector<CompanionAccount>& accounts);
std::string line(const CompanionAccount& account);
std::optional<std::string> shared(const CompanionAccount& account);
std::vector<std::string> sharedNotes(const std::set<std::string>& chosen, const std::vector<CompanionAccount>& accounts);
std::string replaces(const std::string& provider, const std::string& computer);
inline constexpr const char* replace = "Replace";
Json body(const std::string& target, const std::vector<std::string>& ids, bool replace);

} // namespace orvan::AccountCopy
