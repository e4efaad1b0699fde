#pragma once
// What to tell the bridge about its own copy of the consent, so both sides end up agreeing with
// the owner's word.

#include <optional>

namespace orvan::ConsentSync {

// `bridge` is the bridge's copy (absent: it says nothing, so nothing is told); `owner` is the
// owner's `CrashConsent::allowed`. Answers the value to tell, or nothing.
std::optional<bool> say(std::optional<bool> bridge, bool owner, bool refused, std::optional<bool> bridgeAnswered);

} // namespace orvan::ConsentSync
