#pragma once
// The two privacy grants the bridge's helper needs, and what the companion knows about each.

namespace orvan {

enum class AccessKind { screen, input };

enum class AccessState {
    allowed,   // the process that needs the grant has it
    ask,       // nothing was asked yet, or the user hasn't come back from being asked
    reopen,    // asked in this launch and the user came back: it takes effect after a restart
    stale,     // asked by an earlier launch and still not allowed: a leftover entry holds it
    elsewhere, // a bridge this program didn't start is the one that lacks it
};

} // namespace orvan
