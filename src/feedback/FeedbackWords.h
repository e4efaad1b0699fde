#pragma once
// The feedback window's own words.

#include "feedback/FeedbackKind.h"

#include <string>

namespace orvan::FeedbackWords {

inline constexpr const char* title = "Send feedback";
inline constexpr const char* kind = "Kind";
inline constexpr const char* picturesAbout =
    "Up to 3 pictures, made smaller to 2 MB together. Each is drawn again, so nothing else in the file goes with it.";
inline constexpr const char* paste = "Paste from the clipboard";
inline constexpr const char* choose = "Choose a file…";
inline constexpr const char* remove = "Remove";
inline constexpr const char* noPicture =
    "The clipboard has no picture. Take a screenshot with Control-Shift-Command-4, then paste.";
inline constexpr const char* includeDiagnostics = "Include diagnostics";
inline constexpr const char* diagnosticsHelp =
    "The companion's version and build, its bridge, macOS, this Mac's model, and each computer it added by number "
    "with its bridge's version. Never secrets, prompts, file paths, repository names or account labels.";
inline constexpr const char* sendRelay = "Send to Linear";
inline constexpr const char* sendMail = "Mail Developer";
inline constexpr const char* sendCopy = "Copy to Clipboard";
inline constexpr const char* mailInstead = "Mail the developer instead";
inline constexpr const char* copyInstead = "Copy to the clipboard instead";
inline constexpr const char* cancel = "Cancel";
inline constexpr const char* done = "Done";
inline constexpr const char* sharingOff = "Sharing is off under Privacy in Orvan Companion, so Orvan sends nothing itself. ";
inline constexpr const char* offMail = "Mail sends this report from your own account instead.";
inline constexpr const char* offCopy = "Copy puts this report on the clipboard to send yourself.";
inline constexpr const char* turnOn = "Turn sharing on";
inline constexpr const char* typedPath = "Picture file";

inline constexpr const char* sent = "Sent to the developer's Linear. Thank you.";
inline constexpr const char* copied = "Copied, with the pictures. Paste it into a message to the Orvan developer.";
inline constexpr const char* mailed = "Opened in Mail, with the pictures. Send it from there.";
inline constexpr const char* stopped = "Stopped. If it had already reached the relay, it may have been filed.";
inline constexpr const char* relayOff = "Feedback is not set up on the relay yet.";
inline constexpr const char* sharingIsOff = "Sharing is off, so the report was not sent.";
inline constexpr const char* unreachable = "Orvan Companion could not reach its bridge. Try again, or send it by mail.";
inline constexpr const char* paired = "The relay takes reports only from a Mac with a phone paired. Send it by mail instead.";
inline constexpr const char* notSent = "The report was not sent. Try again, or send it by mail.";
inline constexpr const char* noMail = "No mail program opened. Copy it to the clipboard instead.";
inline constexpr const char* noClipboard = "Nothing could be put on the clipboard.";

inline constexpr const char* writeFirst = "Write what happened first.";
inline constexpr const char* tooManyPictures = "Attach at most 3 pictures.";
inline constexpr const char* tooBig = "The pictures are too big together.";

inline constexpr const char* footerRelay =
    "Exactly this, through the Orvan relay as this Mac, which files it for the developer in Linear. The relay adds a "
    "short code that groups your reports; it names no one.";
inline constexpr const char* footerMail = "Exactly this, by Mail, with the pictures attached.";
inline constexpr const char* footerClipboard = "Exactly this, by the clipboard, with the pictures attached.";

// The text field's label follows the kind.
inline const char* textLabel(FeedbackKind kind) {
    if (kind == FeedbackKind::feature) return "What you would like";
    if (kind == FeedbackKind::other) return "Your note";
    return "What happened";
}

// "One picture could not be added." or "<n> pictures could not be added."
inline std::string notAdded(int count) {
    if (count == 1) return "One picture could not be added.";
    return std::to_string(count) + " pictures could not be added.";
}

inline std::string picture(int number) { return "Picture " + std::to_string(number); }

} // namespace orvan::FeedbackWords
