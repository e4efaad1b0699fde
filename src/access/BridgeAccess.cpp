// The bridge model's judgement of the privacy grants: what each kind needs next, remembered
// across launches, and the note for an identity that changed since the grants were last true.

#include "access/AccessStore.h"
#include "access/AccessWords.h"
#include "access/Relaunch.h"
#include "bridge/Bridge.h"

#include <unistd.h>

namespace orvan {

void Bridge::loadAccess() {
    kept = AccessStore::read(setup_.environment);
    AccessTrail loaded;
    loaded.launch = trail.launch;
    loaded.sent = AccessTrail::marks(kept.sent);
    trail = std::move(loaded);
    if (setup_.identity) {
        CodeIdentity& who = *setup_.identity;
        CompanionMark identity{who.bundle(), who.team(), who.requirement()};
        if (auto change = MarkCheck::change(kept.mark, identity, who.earlier())) {
            // The stored mark stays old until the note is dismissed: a quit before that shows it again.
            assign(accessNote, AccessWords::note(*change, identity.bundle));
            markPending = identity;
        } else if (kept.mark != identity) {
            kept.mark = identity;
            AccessStore::write(setup_.environment, kept);
        }
    }
    if (setup_.activity) {
        AppActivity* activity = setup_.activity;
        observers.push_back(activity->observe([this, activity] {
            if (!activity->active) {
                trail.resigned();
                return;
            }
            trail.activated();
            judgeAccess();
        }));
    }
    judgeAccess();
}

void Bridge::judgeAccess() {
    if (!setup_.grants) return;
    // The helper's word counts only while sharing is on: otherwise it isn't running to say it.
    std::optional<HelperPermissions> permissions;
    if (screen.on.value_or(false)) permissions = screen.permissions;
    std::map<AccessKind, AccessState> judged;
    bool settled = false;
    for (AccessKind kind : accessKinds) {
        bool app = setup_.grants->allows(kind);
        std::optional<bool> helper;
        if (permissions) helper = permissions->allows(kind);
        AccessState state = trail.state(kind, app, helper, startedByUs);
        if (state == AccessState::allowed && trail.settle(kind)) settled = true;
        judged[kind] = state;
    }
    if (settled) {
        kept.sent = trail.saved();
        AccessStore::write(setup_.environment, kept);
    }
    assign(access, judged);
    if (!accessNote.empty() &&
        std::all_of(judged.begin(), judged.end(), [](const auto& entry) { return entry.second == AccessState::allowed; }))
        dismissAccessNote();
}

void Bridge::ask(AccessKind kind) {
    trail.asked(kind);
    // Written before the system is asked: the answer may come only after a restart.
    kept.sent = trail.saved();
    AccessStore::write(setup_.environment, kept);
    if (setup_.grants) setup_.grants->ask(kind);
    judgeAccess();
}

bool Bridge::openAccess(AccessKind kind) {
    std::string why;
    return setup_.grants && setup_.grants->open(kind, why);
}

void Bridge::dismissAccessNote() {
    if (markPending) {
        kept.mark = *markPending;
        AccessStore::write(setup_.environment, kept);
    }
    markPending.reset();
    assign(accessNote, std::string());
}

void Bridge::relaunch() {
    assign(relaunchNote, std::string());
    std::optional<int> bridgePid;
    if (startedByUs && child && child->isRunning()) bridgePid = child->processIdentifier();
    if (!setup_.program.empty() &&
        Relaunch::begin(processes_, setup_.program, static_cast<int>(::getpid()), bridgePid, setup_.environment)) {
        releaseLidHold();
        stopIfOwned();
        if (setup_.terminate) setup_.terminate();
        return;
    }
    assign(relaunchNote, std::string("Orvan Companion could not reopen itself. Quit it from the menu bar, then open it again."));
}

} // namespace orvan
