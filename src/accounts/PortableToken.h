#pragma once
// A Claude login's token for other computers: the phone copies the account with it, without
// signing this computer out.

#include "accounts/CompanionAccount.h"
#include "foundation/Json.h"

#include <optional>
#include <string>

namespace orvan::PortableToken {

inline constexpr const char* ready = "Ready to copy";
inline constexpr const char* make = "Make a token for other computers";
inline constexpr const char* waiting = "Finish in the browser, then come back here.";
inline constexpr const char* help =
    "Opens the browser for one click, signed in to this account. The token lets your iPhone copy this account to "
    "another computer without signing this Mac out.";
inline constexpr const char* noToken = "No token was made. Try again.";

struct Answer {
    std::string state; // "ready", "waiting", "failed"
    std::optional<std::string> message;
    bool operator==(const Answer&) const = default;
    // The words of a failed answer: its message, trimmed, or the fixed sentence.
    std::string failedText() const;
    static std::optional<Answer> decode(const Json& j);
};

bool applies(const CompanionAccount& account);

} // namespace orvan::PortableToken
