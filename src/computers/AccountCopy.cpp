#include "computers/AccountCopy.h"

#include "accounts/AccountProvider.h"
#include "accounts/AccountWords.h"
#include "accounts/PortableToken.h"

#include <algorithm>

namespace orvan::AccountCopy {

std::optional<Result> Result::decode(const Json& j) {
    Result r;
    Fields f(j);
    f.required("id", r.id).loose("copied", r.copied, false).loose("code", r.code).loose("message", r.message);
    return f.result(std::move(r));
}

std::vector<std::string> Answer::waiting() const {
    std::vector<std::string> ids;
    for (const auto& r : results)
        if (r.waitsToReplace()) ids.push_back(r.id);
    return ids;
}

std::optional<Answer> Answer::decode(const Json& j) {
    if (!j.is_object()) return std::nullopt;
    Answer a;
    std::optional<Lossy<Result>> rows;
    Fields(j).loose("steps", a.steps, std::vector<std::string>{}).loose("results", rows).loose("message", a.message);
    if (rows) a.results = std::move(rows->items);
    return a;
}

bool needsToken(const CompanionAccount& account) { return PortableToken::applies(account) && !account.portable; }

std::vector<CompanionAccount> choosable(const std::vector<CompanionAccount>& accounts) {
    std::vector<CompanionAccount> out;
    for (const auto& account : accounts)
        if (!needsToken(account)) out.push_back(account);
    return out;
}

std::vector<std::string> request(const std::set<std::string>& chosen, const std::vector<CompanionAccount>& accounts) {
    std::vector<std::string> ids;
    for (const auto& account : choosable(accounts))
        if (chosen.count(account.id)) ids.push_back(account.id);
    return ids;
}

std::string line(const CompanionAccount& account) {
    return account.label + " · " + AccountProviders::name(account.provider) + " · " + AccountWords::kindLine(account);
}

std::optional<std::string> shared(const CompanionAccount& account) {
    static const char* const sharing[] = {"codex", "grok", "cursor", "gemini"};
    if (account.kind != "login") return std::nullopt;
    if (std::none_of(std::begin(sharing), std::end(sharing), [&](const char* p) { return account.provider == p; }))
        return std::nullopt;
    std::string text = "Both computers then share this sign-in. If " + AccountProviders::name(account.provider) +
                       " renews it on one, the other may need to sign in again; signing it in again on that computer "
                       "fixes that.";
    if (account.provider == "cursor")
        text += " Cursor has one sign-in for each user of a computer, so this becomes the other computer's Cursor "
                "sign-in.";
    return text;
}

std::vector<std::string> sharedNotes(const std::set<std::string>& chosen, const std::vector<CompanionAccount>& accounts) {
    std::vector<std::string> notes;
    for (const auto& account : accounts) {
        if (!chosen.count(account.id)) continue;
        auto note = shared(account);
        if (note && std::find(notes.begin(), notes.end(), *note) == notes.end()) notes.push_back(*note);
    }
    return notes;
}

std::string replaces(const std::string& provider, const std::string& computer) {
    return "This replaces the " + AccountProviders::name(provider) + " sign-in on " + computer + ".";
}

Json body(const std::string& target, const std::vector<std::string>& ids, bool replace) {
    Json out = {{"target", target}, {"accounts", ids}};
    if (replace) out["replace"] = true;
    return out;
}

} // namespace orvan::AccountCopy
