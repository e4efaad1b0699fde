#pragma once
// Where a running sign-in on a computer stands. Read loosely: a key that is missing or of the
// wrong type gives its default, so an odd field never loses the state; texts are trimmed.

#include "foundation/Json.h"

#include <optional>
#include <string>

namespace orvan {

struct HostSignInState {
    // "starting", "show-link", "waiting-for-code", "verifying", "done", "failed", "canceled", "none".
    std::string state;
    // The sign-in page, kept only when it is one this computer may open (HostSignIn::page).
    std::optional<std::string> url;
    // A code for the owner to enter on the page.
    std::string code;
    // The page will show a code to paste back here.
    bool paste = false;
    std::string lands;
    // The new account's label.
    std::string label;
    std::string message;

    bool isWaiting() const { return (state == "show-link" || state == "waiting-for-code") && url.has_value(); }
    bool isOver() const {
        return state.empty() || state == "done" || state == "failed" || state == "canceled" || state == "none";
    }

    static std::optional<HostSignInState> decode(const Json& j);
    bool operator==(const HostSignInState&) const = default;
};

} // namespace orvan
