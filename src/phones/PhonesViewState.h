#pragma once
// What the Phones section remembers between renders beyond its confirmations: the open invite
// sheet, whose model lives exactly as long as the sheet is shown.

#include "foundation/Observable.h"

#include <memory>
#include <optional>
#include <string>

namespace orvan {

class InviteSheet;

struct PhonesViewState {
    std::shared_ptr<InviteSheet> invite;
    std::shared_ptr<Observable::Subscription> inviteWatch;
    // The unused invite whose cancellation is being confirmed, by id.
    std::optional<std::string> cancelling;
};

} // namespace orvan
