#pragma once
// The invite sheet: the form, then the handover of the code or link, and the unused invites.

#include "foundation/Time.h"
#include "phones/InviteDraft.h"
#include "ui/Node.h"

#include <functional>
#include <string>

namespace orvan {

class Bridge;
class Clipboard;
class InviteSheet;
class Mail;
struct PhonesViewState;

namespace InviteSheetView {

struct Context {
    std::function<void()> done;
    std::function<void()> changed;
    Clipboard* clipboard = nullptr;
    Mail* mail = nullptr;
    // Whether a guest may be let reply; a build-time choice, open here so both forms can be seen.
    bool replies = InviteOffer::guestReplies;
};

ui::Node build(InviteSheet& sheet, Bridge& bridge, PhonesViewState& state, TimePoint now, const Context& context);

} // namespace InviteSheetView

} // namespace orvan
