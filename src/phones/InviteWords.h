#pragma once
// The invite sheet's sentences.

#include "foundation/Time.h"
#include "phones/InviteDraft.h"
#include "phones/MadeInvite.h"

#include <string>

namespace orvan::InviteWords {

inline constexpr const char* member = "A member works with the agents on this Mac, but cannot see its screen, use its "
                                      "accounts, or approve and remove phones.";
inline constexpr const char* guest = "A guest sees only the projects or sessions you pick, until the end date, and "
                                     "never answers permission prompts.";
inline constexpr const char* replyWarning =
    "A guest who can reply directs the agent, and the agent can read this project's files, secrets such as .env "
    "included, without asking. It asks someone at this Mac before it edits a file or runs a command.";
inline constexpr const char* watches = "Watches: cannot send messages or start sessions.";
inline constexpr const char* canReply = "Can reply: sends messages, and starts sessions in its projects.";
inline constexpr const char* qr = "Show QR: for someone beside you. It works for 10 minutes, with no approval.";
inline constexpr const char* link =
    "Share a link: send it any way you like. It works for 24 hours, and you approve the join here.";
inline constexpr const char* shownQR = "On the other phone, open the Camera and point it at this code, then tap the "
                                       "link. The code works once, for 10 minutes.";
inline constexpr const char* madeLink = "Send this link. When they open it, this Mac asks you to approve them after "
                                        "they read you a 4-digit code. It works once, for 24 hours.";

std::string does(const InviteDraft& draft, bool replies);
std::string scopeHelp(bool replies);
std::string name(const LiveInvite& invite);
std::string live(const LiveInvite& invite, TimePoint now, const Calendar& calendar);

} // namespace orvan::InviteWords
