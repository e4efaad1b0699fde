#include "accounts/PortableToken.h"

#include "foundation/Text.h"

namespace orvan::PortableToken {

std::string Answer::failedText() const {
    std::string text = message ? Text::trimmed(*message) : std::string();
    return text.empty() ? std::string(noToken) : text;
}

std::optional<Answer> Answer::decode(const Json& j) {
    if (!j.is_object() || !j.contains("state") || !j["state"].is_string()) return std::nullopt;
    Answer out;
    out.state = j["state"].get<std::string>();
    if (j.contains("message") && j["message"].is_string()) out.message = j["message"].get<std::string>();
    return out;
}

bool applies(const CompanionAccount& account) { return account.provider == "claude" && account.kind == "login"; }

} // namespace orvan::PortableToken
