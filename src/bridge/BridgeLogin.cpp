#include "bridge/Bridge.h"
#include "bridge/Carryover.h"
#include "foundation/UserDefaults.h"

namespace orvan {

void Bridge::setLogin(bool on) {
    assign(loginNote, std::string());
    // An explicit choice, either way, ends the carrying over: a later launch at login must not undo it.
    UserDefaults::domain(Carryover::bundle, setup().environment)->set(Carryover::loginSettledKey, true);

    LoginItem* item = setup().loginItem;
    std::string error;
    // Without a login facility nothing can be changed, which is the same as being refused.
    bool worked = item && (on ? item->registerItem(error) : item->unregisterItem(error));
    assign(loginOn, item && item->status() == LoginItem::Status::Enabled);
    // The error's own words stay out of sight; the one thing the user can act on is where the program lies.
    if (!worked) assign(loginNote, std::string("Move Orvan Companion into Applications, then turn this on."));
}

} // namespace orvan
