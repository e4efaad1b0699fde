#include "computers/ReplaceAsk.h"

#include "foundation/Text.h"

namespace orvan {

std::string ReplaceAsk::id() const {
    std::string out = target;
    for (const auto& i : ids) out += "|" + i;
    return out;
}

std::optional<ReplaceAsk> ReplaceAsk::from(const std::string& target, const std::string& computer,
                                           const AccountCopy::Answer& answer,
                                           const std::vector<CompanionAccount>& accounts) {
    ReplaceAsk ask{target, answer.waiting(), {}};
    if (ask.ids.empty()) return std::nullopt;
    for (const auto& row : answer.results) {
        if (!row.waitsToReplace()) continue;
        ask.question = Text::trimmed(row.message.value_or(""));
        break;
    }
    if (ask.question.empty()) {
        // The bridge said nothing of its own: the sign-in there is the first waiting account's kind.
        std::string provider = "cursor";
        for (const auto& account : accounts)
            if (account.id == ask.ids.front()) provider = account.provider;
        ask.question = AccountCopy::replaces(provider, computer);
    }
    return ask;
}

} // namespace orvan
