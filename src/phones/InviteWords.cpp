#include "phones/InviteWords.h"

#include "accounts/AccountWords.h"
#include "foundation/Text.h"

namespace orvan {

std::string InviteWords::does(const InviteDraft& draft, bool replies) {
    return replies && draft.mode == GuestMode::reply ? canReply : watches;
}

std::string InviteWords::scopeHelp(bool replies) {
    if (replies)
        return "A project gives them its sessions, and lets Can reply start new ones there. A session gives them that "
               "one.";
    return "A project gives them its sessions, and new ones as they start. A session gives them that one.";
}

std::string InviteWords::name(const LiveInvite& invite) {
    std::string trimmed = Text::trimmed(invite.name);
    return trimmed.empty() ? std::string("No name") : trimmed;
}

std::string InviteWords::live(const LiveInvite& invite, TimePoint now, const Calendar& calendar) {
    std::string who = invite.role == "guest" ? "Guest" : "Member";
    if (invite.role == "guest" && invite.guest) who += invite.guest->mode == "reply" ? ", can reply" : ", watches";
    std::string how = invite.kind == "link" ? "Link" : "QR code";
    if (invite.expires) how += ", works until " + AccountWords::time(*invite.expires, now, calendar);
    return who + ". " + how;
}

} // namespace orvan
