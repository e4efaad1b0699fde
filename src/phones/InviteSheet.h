#pragma once
// The invite sheet's model: the form, the invite being handed over, and the unused invites. It
// lives as long as the sheet is open; its poll of the unused invites ends with it.

#include "accounts/AccountWords.h"
#include "bridge/Bridge.h"
#include "foundation/Async.h"
#include "foundation/Observable.h"
#include "phones/InviteDraft.h"
#include "phones/MadeInvite.h"
#include "phones/ScopeList.h"
#include "platform/Clipboard.h"
#include "platform/Mail.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace orvan {

class InviteSheet final : public Observable {
public:
    InviteSheet(Bridge& bridge, Calendar calendar);
    ~InviteSheet() override;

    InviteDraft draft;
    Day day;
    std::optional<ScopeList> scope;
    std::string scopeNote;
    std::optional<MadeInvite> made;
    InviteKind madeKind = InviteKind::qr;
    std::optional<std::string> code; // the QR picture, PNG bytes
    bool busy = false;
    std::string note;
    bool copied = false;
    std::set<std::string> before;
    std::vector<LiveInvite> live;
    bool liveBusy = false;

    const Calendar& calendar() const { return calendar_; }
    TimePoint now() const { return bridge_.clock().now(); }

    // On appearing: the poll of the unused invites, every 5 seconds until the sheet goes.
    void appeared();
    bool canMake(TimePoint now) const;
    Task<void> make(InviteKind kind);
    Task<void> loadScope();
    Task<void> loadLive();
    Task<void> cancel(LiveInvite invite);

    // The form's changes that do more than set a field.
    void setRole(InviteRole role);
    void setEnd(GuestEnd end);
    void setDay(Day picked);
    void pick(bool project, const std::string& id, bool on);
    void setName(std::string name);
    void setMode(GuestMode mode) { assign(draft.mode, mode); }
    // "Invite someone else": back to an empty form; an invite made before still works.
    void another();
    // Puts the made link on the clipboard, out of its history.
    void copy(Clipboard& clipboard);
    // Offers the link to the mail program, or copies it where there is none.
    void share(Mail* mail, Clipboard* clipboard, const std::string& macName);
    // The made link, when it passed the check; only such a link is shown, copied or shared.
    std::optional<std::string> link() const;

private:
    Task<void> poll(Cancel alive);
    void touched() { publish(); }

    Bridge& bridge_;
    Calendar calendar_;
    Cancel alive_;
    bool polling_ = false;
};

} // namespace orvan
