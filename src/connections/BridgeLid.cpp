// The lid operations of the bridge model: the wish, and bringing the real hold in line with it on
// every poll round, whether a bridge answers or not.

#include "bridge/Bridge.h"
#include "connections/LidStore.h"
#include "connections/LidWords.h"

namespace orvan {

void Bridge::setLid(bool on) {
    assign(lidLoaded, true);
    assign(lidOn, on);
    LidStore::write(setup_.environment, on);
    refreshLid();
}

void Bridge::releaseLidHold() {
    if (!lidHeld || !setup_.lid) return;
    setup_.lid->release();
    assign(lidHeld, false);
}

void Bridge::loadLid() {
    // Without a hold to manage there is no wish to read either: tests of other parts leave it out.
    if (lidLoaded || !setup_.lid) return;
    assign(lidLoaded, true);
    assign(lidOn, LidStore::read(setup_.environment));
    if (!lidOn) setup_.lid->release();
    refreshLid();
}

void Bridge::refreshLid() {
    if (!setup_.lid) return;
    LidWake& wake = *setup_.lid;
    if (lidOn && wake.batteryTooLow()) {
        // The wish stays: the hold comes back once the machine charges.
        releaseLidHold();
        assign(lidNote, LidWords::low);
        return;
    }
    if (!lidOn) {
        releaseLidHold();
        assign(lidNote, LidWords::sleeps);
        return;
    }
    if (wake.engage()) {
        assign(lidHeld, true);
        assign(lidNote, LidWords::held);
        return;
    }
    releaseLidHold();
    assign(lidNote, LidWords::refused);
}

} // namespace orvan
